// SPDX-License-Identifier: MIT
#include "platform/linux/accessibility/atspi_bus.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>

#include "platform/linux/session/buses.h"

namespace lexwend::platform {
namespace {

constexpr const char* kRegistry = "org.a11y.atspi.Registry";
constexpr const char* kRootPath = "/org/a11y/atspi/accessible/root";

/// The answers to many calls, as they come.
struct Round {
  std::vector<GVariantRef> answers;
  std::size_t waiting = 0;
  bool wasCancelled = false;
  std::set<std::string> silent;  // bus names of calls that timed out
  std::function<void(const std::vector<GVariantRef>&)> then;
};

/// Sends every call that `mayAsk` allows; the answers come to the thread's default context.
std::shared_ptr<Round> ask(GDBusConnection* connection, const std::vector<AtspiCall>& calls, int milliseconds,
                           GCancellable* cancellable, const std::function<bool(const AtspiCall&)>& mayAsk) {
  struct Slot {
    std::shared_ptr<Round> round;
    std::size_t index;
    std::string bus;
  };
  auto round = std::make_shared<Round>();
  round->answers.resize(calls.size());
  for (std::size_t i = 0; i < calls.size(); ++i) {
    const AtspiCall& call = calls[i];
    if (!mayAsk(call)) continue;
    ++round->waiting;
    g_dbus_connection_call(
        connection, call.object.bus.c_str(), call.object.path.c_str(), call.interface, call.method,
        call.arguments.get(), G_VARIANT_TYPE(call.replyType), G_DBUS_CALL_FLAGS_NO_AUTO_START, milliseconds,
        cancellable,
        [](GObject* source, GAsyncResult* result, gpointer data) {
          const std::unique_ptr<Slot> slot(static_cast<Slot*>(data));
          Round& asked = *slot->round;
          GError* error = nullptr;
          asked.answers[slot->index].reset(
              g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &error));
          const GErrorRef owned(error);
          if (error != nullptr && (g_error_matches(error, G_IO_ERROR, G_IO_ERROR_TIMED_OUT) != FALSE ||
                                   g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_NO_REPLY) != FALSE)) {
            asked.silent.insert(slot->bus);
          }
          if (error != nullptr && g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED) != FALSE) {
            asked.wasCancelled = true;
          }
          if (--asked.waiting == 0 && asked.then && !asked.wasCancelled) asked.then(asked.answers);
        },
        new Slot{round, i, call.object.bus});
  }
  return round;
}

}  // namespace

AtspiCall::AtspiCall(AtspiObject to, const char* interfaceName, const char* methodName,
                     GVariant* withArguments, const char* answerType)
    : object(std::move(to)), interface(interfaceName), method(methodName), replyType(answerType) {
  if (withArguments != nullptr) arguments.reset(g_variant_ref_sink(withArguments), GVariantUnref());
}

AtspiCall askStates(const AtspiObject& object) {
  return {object, AtspiBus::kAccessible, "GetState", nullptr, "(au)"};
}

AtspiCall askInterfaces(const AtspiObject& object) {
  return {object, AtspiBus::kAccessible, "GetInterfaces", nullptr, "(as)"};
}

AtspiCall askChildren(const AtspiObject& object) {
  return {object, AtspiBus::kAccessible, "GetChildren", nullptr, "(a(so))"};
}

AtspiCall askProperty(const AtspiObject& object, const char* interface, const char* name) {
  return {object, "org.freedesktop.DBus.Properties", "Get", g_variant_new("(ss)", interface, name), "(v)"};
}

std::optional<std::uint64_t> statesIn(const GVariantRef& reply) {
  if (!reply) return std::nullopt;
  const GVariantRef words(g_variant_get_child_value(reply.get(), 0));
  std::uint64_t bits = 0;
  for (gsize i = 0; i < std::min<gsize>(2, g_variant_n_children(words.get())); ++i) {
    const GVariantRef word(g_variant_get_child_value(words.get(), i));
    bits |= std::uint64_t{g_variant_get_uint32(word.get())} << (32 * i);
  }
  return bits;
}

bool interfacesHave(const GVariantRef& reply, const char* interface) {
  if (!reply) return false;
  const GVariantRef names(g_variant_get_child_value(reply.get(), 0));
  GVariantIter iterator;
  g_variant_iter_init(&iterator, names.get());
  const char* name = nullptr;
  while (g_variant_iter_next(&iterator, "&s", &name) != FALSE) {
    if (std::strcmp(name, interface) == 0) return true;
  }
  return false;
}

std::vector<AtspiObject> objectsIn(const GVariantRef& reply) {
  std::vector<AtspiObject> objects;
  if (!reply) return objects;
  const GVariantRef array(g_variant_get_child_value(reply.get(), 0));
  GVariantIter iterator;
  g_variant_iter_init(&iterator, array.get());
  const char* bus = nullptr;
  const char* path = nullptr;
  while (g_variant_iter_next(&iterator, "(&s&o)", &bus, &path) != FALSE) objects.push_back({bus, path});
  return objects;
}

std::optional<std::int32_t> integerIn(const GVariantRef& property) {
  if (!property) return std::nullopt;
  GVariant* inner = nullptr;
  g_variant_get(property.get(), "(v)", &inner);
  const GVariantRef value(inner);
  if (g_variant_is_of_type(inner, G_VARIANT_TYPE_INT32) == FALSE) return std::nullopt;
  return g_variant_get_int32(inner);
}

std::optional<std::string> textIn(const GVariantRef& property) {
  if (!property) return std::nullopt;
  GVariant* inner = nullptr;
  g_variant_get(property.get(), "(v)", &inner);
  const GVariantRef value(inner);
  if (g_variant_is_of_type(inner, G_VARIANT_TYPE_STRING) == FALSE) return std::nullopt;
  return g_variant_get_string(inner, nullptr);
}

AtspiBus::~AtspiBus() {
  if (cancellable_) g_cancellable_cancel(cancellable_.get());
  disconnected();
}

void AtspiBus::start() {
  if (connecting_ || isConnected()) return;
  GDBusConnection* const session = sessionBus();
  if (session == nullptr) return;
  connecting_ = true;
  if (!cancellable_) cancellable_.reset(g_cancellable_new());
  askForAddress(session);
}

void AtspiBus::askForAddress(GDBusConnection* session) {
  // Toolkits offer their objects only while somebody has asked for it; no reader library does this by itself.
  g_dbus_connection_call(session, "org.a11y.Bus", "/org/a11y/bus", "org.freedesktop.DBus.Properties", "Set",
                         g_variant_new("(ssv)", "org.a11y.Status", "IsEnabled", g_variant_new_boolean(TRUE)),
                         nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr, nullptr);
  g_dbus_connection_call(
      session, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", nullptr, G_VARIANT_TYPE("(s)"),
      G_DBUS_CALL_FLAGS_NONE, -1, cancellable_.get(),
      [](GObject* source, GAsyncResult* result, gpointer self) {
        GError* error = nullptr;
        const GVariantRef reply(g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &error));
        const GErrorRef owned(error);
        if (error != nullptr && g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED) != FALSE) return;
        auto* bus = static_cast<AtspiBus*>(self);
        if (!reply) {
          bus->connecting_ = false;
          return;
        }
        const char* address = nullptr;
        g_variant_get(reply.get(), "(&s)", &address);
        bus->connectTo(address);
      },
      this);
}

void AtspiBus::connectTo(const char* address) {
  g_dbus_connection_new_for_address(
      address,
      static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                        G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
      nullptr, cancellable_.get(),
      [](GObject*, GAsyncResult* result, gpointer self) {
        GError* error = nullptr;
        GDBusConnection* connection = g_dbus_connection_new_for_address_finish(result, &error);
        const GErrorRef owned(error);
        if (error != nullptr && g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED) != FALSE) return;
        auto* bus = static_cast<AtspiBus*>(self);
        bus->connecting_ = false;
        if (connection != nullptr) bus->connected(connection);
      },
      this);
}

void AtspiBus::connected(GDBusConnection* connection) {
  connection_.reset(connection);
  closedHandler_ = g_signal_connect(connection, "closed",
                                    G_CALLBACK(+[](GDBusConnection*, gboolean, GError*, gpointer self) {
                                      static_cast<AtspiBus*>(self)->disconnected();
                                    }),
                                    this);
  subscription_ = g_dbus_connection_signal_subscribe(
      connection, nullptr, "org.a11y.atspi.Event.Object", "StateChanged", nullptr, "focused",
      G_DBUS_SIGNAL_FLAGS_NONE,
      [](GDBusConnection*, const char* sender, const char* path, const char*, const char*,
         GVariant* parameters, gpointer self) {
        // "(siiv...)": what changed, and whether it is so now.
        if (g_variant_n_children(parameters) < 2 || sender == nullptr) return;
        const GVariantRef isSo(g_variant_get_child_value(parameters, 1));
        if (g_variant_is_of_type(isSo.get(), G_VARIANT_TYPE_INT32) == FALSE ||
            g_variant_get_int32(isSo.get()) == 0) {
          return;
        }
        static_cast<AtspiBus*>(self)->lastFocus_ = AtspiObject{sender, path};
      },
      this, nullptr);
  // Applications send an event only when somebody is registered for it.
  g_dbus_connection_call(connection, kRegistry, "/org/a11y/atspi/registry", kRegistry, "RegisterEvent",
                         g_variant_new("(sass)", "object:state-changed:focused", nullptr, ""), nullptr,
                         G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr, nullptr);
}

void AtspiBus::disconnected() {
  if (!connection_) return;
  if (subscription_ != 0) g_dbus_connection_signal_unsubscribe(connection_.get(), subscription_);
  if (closedHandler_ != 0) g_signal_handler_disconnect(connection_.get(), closedHandler_);
  subscription_ = 0;
  closedHandler_ = 0;
  connection_.reset();
  lastFocus_.reset();
  processes_.clear();
  toolkits_.clear();
}

void AtspiBus::beginRound() {
  roundStart_ = std::chrono::steady_clock::now();
  silent_.clear();
}

void AtspiBus::joinRound() {
  const auto now = std::chrono::steady_clock::now();
  if (roundStart_ == std::chrono::steady_clock::time_point::min() || now - roundStart_ > kSameFix) {
    beginRound();
  }
}

std::chrono::milliseconds AtspiBus::roundAge() {
  if (roundStart_ == std::chrono::steady_clock::time_point::min()) beginRound();
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() -
                                                               roundStart_);
}

GVariantRef AtspiBus::call(const AtspiCall& call) {
  return std::move(callAll({call}).front());
}

std::vector<GVariantRef> AtspiBus::callAll(const std::vector<AtspiCall>& calls,
                                           std::chrono::milliseconds limit) {
  const auto left = kRoundLimit - roundAge();
  if (!isConnected() || left.count() <= 0) return std::vector<GVariantRef>(calls.size());

  // The answers come to a context of this call alone, so that nothing else of the program runs meanwhile.
  GMainContext* const context = g_main_context_new();
  g_main_context_push_thread_default(context);
  const auto round = ask(connection_.get(), calls, static_cast<int>(std::min(left, limit).count()), nullptr,
                         [this](const AtspiCall& call) { return !timedOut(call.object); });
  while (round->waiting > 0) g_main_context_iteration(context, TRUE);
  g_main_context_pop_thread_default(context);
  g_main_context_unref(context);
  silent_.merge(round->silent);
  return std::move(round->answers);
}

void AtspiBus::whenAnswered(const std::vector<AtspiCall>& calls,
                            std::function<void(const std::vector<GVariantRef>&)> then) {
  if (!isConnected()) return;
  ask(connection_.get(), calls, G_MAXINT, cancellable_.get(), [](const AtspiCall&) { return true; })->then =
      std::move(then);
}

void AtspiBus::send(const AtspiCall& call) {
  if (!isConnected()) return;
  g_dbus_connection_call(connection_.get(), call.object.bus.c_str(), call.object.path.c_str(), call.interface,
                         call.method, call.arguments.get(), nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START, -1,
                         nullptr, nullptr, nullptr);
}

bool AtspiBus::hasInterface(const AtspiObject& object, const char* interface) {
  return interfacesHave(call(askInterfaces(object)), interface);
}

std::optional<std::uint32_t> AtspiBus::processOf(const std::string& bus) {
  if (const auto known = processes_.find(bus); known != processes_.end()) return known->second;
  const GVariantRef reply = call({{"org.freedesktop.DBus", "/org/freedesktop/DBus"},
                                  "org.freedesktop.DBus",
                                  "GetConnectionUnixProcessID",
                                  g_variant_new("(s)", bus.c_str()),
                                  "(u)"});
  if (!reply) return std::nullopt;
  std::uint32_t process = 0;
  g_variant_get(reply.get(), "(u)", &process);
  processes_[bus] = process;
  return process;
}

std::optional<std::string> AtspiBus::toolkitOf(const AtspiObject& object) {
  if (const auto known = toolkits_.find(object.bus); known != toolkits_.end()) return known->second;
  const GVariantRef application = call({object, kAccessible, "GetApplication", nullptr, "((so))"});
  if (!application) return std::nullopt;
  const char* name = nullptr;
  const char* path = nullptr;
  g_variant_get(application.get(), "((&s&o))", &name, &path);
  // An application may name itself by an empty bus name: it is the one that answered.
  const AtspiObject root{*name != '\0' ? name : object.bus, path};
  auto toolkit = textIn(call(askProperty(root, kApplication, "ToolkitName")));
  if (toolkit) toolkits_[object.bus] = *toolkit;
  return toolkit;
}

std::vector<AtspiObject> AtspiBus::applicationsOf(std::uint32_t process) {
  std::vector<AtspiObject> found;
  for (const AtspiObject& application : objectsIn(call(askChildren({kRegistry, kRootPath})))) {
    if (processOf(application.bus) == process) found.push_back(application);
  }
  return found;
}

}  // namespace lexwend::platform
