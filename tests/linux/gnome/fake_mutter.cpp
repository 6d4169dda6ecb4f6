// SPDX-License-Identifier: MIT
#include "tests/linux/gnome/fake_mutter.h"

#include <array>
#include <chrono>
#include <cstdlib>
#include <future>
#include <stdexcept>
#include <utility>

#include <gio/gunixfdlist.h>
#include <unistd.h>

namespace lexwend::platform {
namespace {

constexpr char kName[] = "org.gnome.Mutter.RemoteDesktop";
constexpr char kPath[] = "/org/gnome/Mutter/RemoteDesktop";
constexpr char kSessionPath[] = "/org/gnome/Mutter/RemoteDesktop/Session/u1";
constexpr char kSession[] = "org.gnome.Mutter.RemoteDesktop.Session";
constexpr std::chrono::seconds kPatience{5};

constexpr char kInterfaces[] = R"xml(<node>
  <interface name="org.gnome.Mutter.RemoteDesktop">
    <method name="CreateSession"><arg type="o" direction="out"/></method></interface>
  <interface name="org.gnome.Mutter.RemoteDesktop.Session">
    <method name="EnableClipboard"><arg type="a{sv}" direction="in"/></method>
    <method name="Start"/><method name="Stop"/>
    <method name="NotifyKeyboardKeycode"><arg type="u" direction="in"/><arg type="b" direction="in"/></method>
    <method name="SetSelection"><arg type="a{sv}" direction="in"/></method>
    <method name="SelectionRead"><arg type="s" direction="in"/><arg type="h" direction="out"/></method>
    <method name="SelectionWrite"><arg type="u" direction="in"/><arg type="h" direction="out"/></method>
    <method name="SelectionWriteDone"><arg type="u" direction="in"/><arg type="b" direction="in"/></method>
  </interface></node>)xml";

void replyWithDescriptor(GDBusMethodInvocation* invocation, int descriptor) {
  GUnixFDList* list = g_unix_fd_list_new_from_array(&descriptor, 1);
  g_dbus_method_invocation_return_value_with_unix_fd_list(invocation, g_variant_new("(h)", 0), list);
  g_object_unref(list);
}

void refuse(GDBusMethodInvocation* invocation) {
  g_dbus_method_invocation_return_dbus_error(invocation, "org.freedesktop.DBus.Error.Failed", "refused");
}

std::string readAll(int descriptor) {
  std::string text;
  std::array<char, 4096> piece{};
  for (ssize_t count = 0; (count = ::read(descriptor, piece.data(), piece.size())) > 0;) {
    text.append(piece.data(), static_cast<std::size_t>(count));
  }
  ::close(descriptor);
  return text;
}

}  // namespace

FakeMutter::FakeMutter() : context_(g_main_context_new()), loop_(g_main_loop_new(context_, FALSE)) {
  std::promise<void> ready;
  thread_ = std::thread([this, &ready] {
    g_main_context_push_thread_default(context_);
    constexpr auto kFlags = GDBusConnectionFlags(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                 G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    bus_ = g_dbus_connection_new_for_address_sync(std::getenv("DBUS_SESSION_BUS_ADDRESS"), kFlags, nullptr,
                                                  nullptr, nullptr);
    static GDBusNodeInfo* const kNode = g_dbus_node_info_new_for_xml(kInterfaces, nullptr);
    static constexpr GDBusInterfaceVTable kTable = {&FakeMutter::called, nullptr, nullptr, {}};
    g_dbus_connection_register_object(bus_, kPath, kNode->interfaces[0], &kTable, this, nullptr, nullptr);
    g_dbus_connection_register_object(bus_, kSessionPath, kNode->interfaces[1], &kTable, this, nullptr,
                                      nullptr);
    constexpr guint32 kNoFlags = 0;
    g_variant_unref(g_dbus_connection_call_sync(
        bus_, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
        g_variant_new("(su)", kName, kNoFlags), nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
    ready.set_value();
    g_main_loop_run(loop_);
    g_dbus_connection_close_sync(bus_, nullptr, nullptr);
    g_object_unref(bus_);
    g_main_context_pop_thread_default(context_);
  });
  ready.get_future().wait();
}

FakeMutter::~FakeMutter() {
  // From within the loop: before it runs, nothing ends it.
  GSource* const quitting = g_idle_source_new();
  const GSourceFunc quit = [](gpointer loop) -> gboolean {
    g_main_loop_quit(static_cast<GMainLoop*>(loop));
    return G_SOURCE_REMOVE;
  };
  g_source_set_callback(quitting, quit, loop_, nullptr);
  g_source_attach(quitting, context_);
  thread_.join();
  g_source_unref(quitting);
  for (const auto& [serial, descriptor] : waiting_) ::close(descriptor);
  endReads();
  g_main_loop_unref(loop_);
  g_main_context_unref(context_);
}

void FakeMutter::called(GDBusConnection* /*bus*/, const char* /*sender*/, const char* /*path*/,
                        const char* /*interface*/, const char* method, GVariant* arguments,
                        GDBusMethodInvocation* invocation, void* self) {
  static_cast<FakeMutter*>(self)->answer(method, arguments, invocation);
}

void FakeMutter::answer(const std::string& method, GVariant* arguments, GDBusMethodInvocation* invocation) {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (!isOpen_) std::this_thread::sleep_for(opening_);
  if (method == "CreateSession") {
    g_dbus_method_invocation_return_value(invocation, g_variant_new("(o)", kSessionPath));
    return;
  }
  if (method == "SelectionRead") {
    if (refusedReads_ > 0) {
      --refusedReads_;
      g_dbus_method_invocation_return_dbus_error(invocation, "org.freedesktop.DBus.Error.LimitsExceeded",
                                                 "Tried to read in parallel");
      return;
    }
    const char* type = nullptr;
    g_variant_get(arguments, "(&s)", &type);
    const auto found = copied_.find(type);
    if (sessionOwns_ || found == copied_.end()) {
      refuse(invocation);
      return;
    }
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0) throw std::runtime_error("no pipe");
    if (::write(ends[1], found->second.data(), found->second.size()) < 0)
      throw std::runtime_error("no write");
    if (holdsReads_) {
      held_.push_back(ends[1]);
    } else {
      ::close(ends[1]);
    }
    replyWithDescriptor(invocation, ends[0]);
    return;
  }
  if (method == "SelectionWrite") {
    guint32 serial = 0;
    g_variant_get(arguments, "(u)", &serial);
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0) throw std::runtime_error("no pipe");
    waiting_[serial] = ends[0];
    replyWithDescriptor(invocation, ends[1]);
    return;
  }
  if (method == "Start") {
    isOpen_ = true;
    ++sessions_;
    if (!copied_.empty()) tellOwner();
  } else if (method == "Stop") {
    isOpen_ = false;
    sessionOwns_ = false;
    owned_.clear();
  } else if (method == "NotifyKeyboardKeycode") {
    guint32 key = 0;
    gboolean isDown = FALSE;
    g_variant_get(arguments, "(ub)", &key, &isDown);
    keys_.push_back(std::to_string(key) + (isDown != FALSE ? " down" : " up"));
  } else if (method == "SetSelection") {
    GVariant* options = g_variant_get_child_value(arguments, 0);
    GVariant* types = g_variant_lookup_value(options, "mime-types", G_VARIANT_TYPE("as"));
    owned_.clear();
    for (gsize i = 0; types != nullptr && i < g_variant_n_children(types); ++i) {
      const char* type = nullptr;
      g_variant_get_child(types, i, "&s", &type);
      owned_.emplace_back(type);
    }
    if (types != nullptr) g_variant_unref(types);
    g_variant_unref(options);
    sessionOwns_ = true;
    copied_.clear();
    tellOwner();
  } else if (method == "SelectionWriteDone") {
    guint32 serial = 0;
    gboolean isWritten = FALSE;
    g_variant_get(arguments, "(ub)", &serial, &isWritten);
    const std::string text = readAll(waiting_[serial]);
    waiting_.erase(serial);
    fetched_[serial] = isWritten != FALSE ? text : "";
  }
  g_dbus_method_invocation_return_value(invocation, nullptr);
}

/// Under the mutex.
void FakeMutter::tellOwner() {
  GVariantBuilder types;
  g_variant_builder_init(&types, G_VARIANT_TYPE("as"));
  if (sessionOwns_) {
    for (const std::string& type : owned_) g_variant_builder_add(&types, "s", type.c_str());
  }
  for (const auto& [type, text] : copied_) {
    g_variant_builder_add(&types, "s", type.c_str());
    g_variant_builder_add(&types, "s", type.c_str());  // mutter lists what the owner does
  }
  GVariantBuilder options;
  g_variant_builder_init(&options, G_VARIANT_TYPE("a{sv}"));
  if (sessionOwns_ || !copied_.empty()) {
    g_variant_builder_add(&options, "{sv}", "mime-types", g_variant_new("(as)", &types));
    const gboolean isOwner = sessionOwns_ ? TRUE : FALSE;
    g_variant_builder_add(&options, "{sv}", "session-is-owner", g_variant_new_boolean(isOwner));
  } else {
    g_variant_builder_clear(&types);
  }
  g_dbus_connection_emit_signal(bus_, nullptr, kSessionPath, kSession, "SelectionOwnerChanged",
                                g_variant_new("(a{sv})", &options), nullptr);
}

void FakeMutter::copy(std::map<std::string, std::string> contents) {
  const std::lock_guard<std::mutex> lock(mutex_);
  copied_ = std::move(contents);
  sessionOwns_ = false;
  owned_.clear();
  if (isOpen_) tellOwner();
  g_dbus_connection_flush_sync(bus_, nullptr, nullptr);
}

void FakeMutter::beBusyFor(int reads) {
  const std::lock_guard<std::mutex> lock(mutex_);
  refusedReads_ = reads;
}

void FakeMutter::openSlowly(std::chrono::milliseconds each) {
  const std::lock_guard<std::mutex> lock(mutex_);
  opening_ = each;
}

void FakeMutter::holdReads() {
  const std::lock_guard<std::mutex> lock(mutex_);
  holdsReads_ = true;
}

void FakeMutter::endReads() {
  const std::lock_guard<std::mutex> lock(mutex_);
  holdsReads_ = false;
  for (const int descriptor : held_) ::close(descriptor);
  held_.clear();
}

std::string FakeMutter::fetch(const std::string& type) {
  unsigned serial = 0;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    serial = ++lastSerial_;
    g_dbus_connection_emit_signal(bus_, nullptr, kSessionPath, kSession, "SelectionTransfer",
                                  g_variant_new("(su)", type.c_str(), serial), nullptr);
  }
  const auto end = std::chrono::steady_clock::now() + kPatience;
  while (std::chrono::steady_clock::now() < end) {
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      const auto found = fetched_.find(serial);
      if (found != fetched_.end()) return found->second;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  throw std::runtime_error("nobody answers the fetch");
}

std::vector<std::string> FakeMutter::owned() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return owned_;
}

void FakeMutter::end() {
  const std::lock_guard<std::mutex> lock(mutex_);
  isOpen_ = false;
  sessionOwns_ = false;
  g_dbus_connection_emit_signal(bus_, nullptr, kSessionPath, kSession, "Closed", nullptr, nullptr);
  g_dbus_connection_flush_sync(bus_, nullptr, nullptr);
}

bool FakeMutter::isOpen() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return isOpen_;
}

int FakeMutter::sessions() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return sessions_;
}

std::vector<std::string> FakeMutter::keys() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return keys_;
}

}  // namespace lexwend::platform
