// SPDX-License-Identifier: MIT
#include "platform/linux/instance/running_instance.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/linux/session/glib_ref.h"
#include "platform/linux/session/identity.h"

namespace lexwend::platform {
namespace {

const std::string kName(kIdentifier);  // of the agent on the bus and of its interface
constexpr char kPath[] = "/org/lexwend/Lexwend";
constexpr char kDropped[] = "org.lexwend.Lexwend.Error.Dropped";
constexpr char kDroppedReason[] = "the agent is busy";
/// Longer than a fix, for which another command waits.
constexpr int kPassTimeoutMilliseconds = 5000;

constexpr char kIntrospection[] = R"xml(<node><interface name="org.lexwend.Lexwend">
  <method name="Fix"/><method name="Menu"/><method name="Settings"/><method name="Quit"/>
  </interface></node>)xml";

constexpr std::array<std::pair<InstanceCommand, const char*>, 4> kMethods = {
    {{InstanceCommand::fix, "Fix"},
     {InstanceCommand::menu, "Menu"},
     {InstanceCommand::settings, "Settings"},
     {InstanceCommand::quit, "Quit"}}};

const char* methodOf(InstanceCommand command) {
  for (const auto& [known, method] : kMethods) {
    if (known == command) return method;
  }
  return "";
}

std::optional<InstanceCommand> commandOf(std::string_view method) {
  for (const auto& [command, known] : kMethods) {
    if (method == known) return command;
  }
  return std::nullopt;
}

GDBusInterfaceInfo* instanceInterface() {
  static GDBusNodeInfo* const kNode = g_dbus_node_info_new_for_xml(kIntrospection, nullptr);
  return kNode->interfaces[0];
}

InstanceAnswer answerOf(const GError& error) {
  if (g_error_matches(&error, G_DBUS_ERROR, G_DBUS_ERROR_SERVICE_UNKNOWN) != FALSE ||
      g_error_matches(&error, G_DBUS_ERROR, G_DBUS_ERROR_NAME_HAS_NO_OWNER) != FALSE) {
    return InstanceAnswer::nobodyRuns;
  }
  char* const remote = g_dbus_error_get_remote_error(&error);
  const bool dropped = remote != nullptr && std::string_view(remote) == kDropped;
  g_free(remote);
  return dropped ? InstanceAnswer::dropped : InstanceAnswer::unreachable;
}

}  // namespace

LinuxRunningInstance::LinuxRunningInstance(std::function<bool()> menuIsOpen)
    : menuIsOpen_(std::move(menuIsOpen)) {}

LinuxRunningInstance::~LinuxRunningInstance() {
  offerOn(nullptr);
}

InstanceAnswer LinuxRunningInstance::pass(InstanceCommand command) {
  GDBusConnection* bus = sessionBus();
  if (bus == nullptr) return InstanceAnswer::unreachable;
  GError* failure = nullptr;
  const GVariantRef reply(g_dbus_connection_call_sync(
      bus, kName.c_str(), kPath, kName.c_str(), methodOf(command), nullptr, nullptr,
      G_DBUS_CALL_FLAGS_NO_AUTO_START, kPassTimeoutMilliseconds, nullptr, &failure));
  const GErrorRef error(failure);
  return reply != nullptr ? InstanceAnswer::taken : answerOf(*error);
}

Registration LinuxRunningInstance::receive(std::function<bool(InstanceCommand)> handler) {
  if (observation_ == nullptr) {
    observation_ = observeSessionBus([this](GDBusConnection* bus) { offerOn(bus); });
  }
  return handlers_.add(std::move(handler));
}

Registration LinuxRunningInstance::dropFixes() {
  ++*pauses_;
  return Registration([pauses = pauses_] { --*pauses; });
}

void LinuxRunningInstance::offerOn(GDBusConnection* bus) {
  if (bus_ != nullptr) {
    g_bus_unown_name(name_);
    g_dbus_connection_remove_filter(bus_, filter_);
    if (object_ != 0) g_dbus_connection_unregister_object(bus_, object_);
  }
  bus_ = bus;
  if (bus_ == nullptr) return;
  static constexpr GDBusInterfaceVTable kMethodTable = {
      &LinuxRunningInstance::methodCalled, nullptr, nullptr, {}};
  // The object comes first: whoever sees the name may call at once.
  object_ = g_dbus_connection_register_object(bus_, kPath, instanceInterface(), &kMethodTable, this, nullptr,
                                              nullptr);
  filter_ = g_dbus_connection_add_filter(
      bus_, &LinuxRunningInstance::messageArrived, new std::shared_ptr<Pauses>(pauses_),
      [](gpointer pauses) { delete static_cast<std::shared_ptr<Pauses>*>(pauses); });
  name_ = g_bus_own_name_on_connection(bus_, kName.c_str(), G_BUS_NAME_OWNER_FLAGS_NONE, nullptr, nullptr,
                                       nullptr, nullptr);
}

/// Runs on the thread of the bus.
GDBusMessage* LinuxRunningInstance::messageArrived(GDBusConnection* bus, GDBusMessage* message,
                                                   gboolean incoming, void* pauses) {
  const bool asksForFix = incoming != FALSE &&
                          g_dbus_message_get_message_type(message) == G_DBUS_MESSAGE_TYPE_METHOD_CALL &&
                          g_strcmp0(g_dbus_message_get_interface(message), kName.c_str()) == 0 &&
                          g_strcmp0(g_dbus_message_get_member(message), methodOf(InstanceCommand::fix)) == 0;
  if (!asksForFix || **static_cast<std::shared_ptr<Pauses>*>(pauses) == 0) return message;
  const GObjectRef<GDBusMessage> reply(
      g_dbus_message_new_method_error_literal(message, kDropped, kDroppedReason));
  g_dbus_connection_send_message(bus, reply.get(), G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr, nullptr);
  g_object_unref(message);
  return nullptr;
}

bool LinuxRunningInstance::takes(InstanceCommand command) {
  if (command == InstanceCommand::fix && menuIsOpen_ && menuIsOpen_()) return false;
  const auto handlers = handlers_.all();
  return !handlers.empty() && (*handlers.back())(command);
}

void LinuxRunningInstance::methodCalled(GDBusConnection*, const char*, const char*, const char*,
                                        const char* method, GVariant*, GDBusMethodInvocation* invocation,
                                        void* self) {
  const auto command = commandOf(method);  // GDBus lets through what the interface has
  if (command && static_cast<LinuxRunningInstance*>(self)->takes(*command)) {
    g_dbus_method_invocation_return_value(invocation, nullptr);
  } else {
    g_dbus_method_invocation_return_dbus_error(invocation, kDropped, kDroppedReason);
  }
}

}  // namespace lexwend::platform
