// SPDX-License-Identifier: MIT
#include "tests/linux/testing/private_bus.h"

#include <csignal>
#include <cstdlib>
#include <stdexcept>

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace lexwend::platform {

PrivateBus::PrivateBus() {
  std::string program = "dbus-daemon";
  std::string session = "--session";
  std::string foreground = "--nofork";
  std::string printAddress = "--print-address=1";
  char* arguments[] = {program.data(), session.data(), foreground.data(), printAddress.data(), nullptr};
  int output = -1;
  // What it starts is of its group and ends with it, also while that is starting something itself. It ends
  // with the thread that made it, also where that is killed.
  const GSpawnChildSetupFunc leadGroup = [](gpointer) {
    ::setpgid(0, 0);
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
  };
  // A child of this process itself: GLib would put another one between them, which ends at once.
  constexpr auto kFlags = GSpawnFlags(G_SPAWN_SEARCH_PATH | G_SPAWN_DO_NOT_REAP_CHILD);
  if (g_spawn_async_with_pipes(nullptr, arguments, nullptr, kFlags, leadGroup, nullptr, &process_, nullptr,
                               &output, nullptr, nullptr) == FALSE) {
    throw std::runtime_error("dbus-daemon cannot be started");
  }
  for (char byte = 0; ::read(output, &byte, 1) == 1 && byte != '\n';) address_ += byte;
  ::close(output);
  ::setenv("DBUS_SESSION_BUS_ADDRESS", address_.c_str(), 1);
  ::setenv("DBUS_SYSTEM_BUS_ADDRESS", address_.c_str(), 1);
}

PrivateBus::~PrivateBus() {
  ::kill(-process_, SIGTERM);
  ::waitpid(process_, nullptr, 0);
}

BusPeer::BusPeer() {
  constexpr auto kFlags = GDBusConnectionFlags(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                               G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
  connection_ = g_dbus_connection_new_for_address_sync(std::getenv("DBUS_SESSION_BUS_ADDRESS"), kFlags,
                                                       nullptr, nullptr, nullptr);
  if (connection_ == nullptr) throw std::runtime_error("no connection to the private bus");
  g_dbus_connection_add_filter(connection_, &BusPeer::seen, this, nullptr);
}

BusPeer::~BusPeer() {
  g_dbus_connection_close_sync(connection_, nullptr, nullptr);
  g_object_unref(connection_);
}

void BusPeer::ownName(const std::string& name) {
  constexpr guint32 kNoFlags = 0;
  call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
       g_variant_new("(su)", name.c_str(), kNoFlags));
}

void BusPeer::releaseName(const std::string& name) {
  call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "ReleaseName",
       g_variant_new("(s)", name.c_str()));
}

void BusPeer::emit(const char* path, const char* interface, const char* signal, GVariant* arguments) {
  g_dbus_connection_emit_signal(connection_, nullptr, path, interface, signal, arguments, nullptr);
  g_dbus_connection_flush_sync(connection_, nullptr, nullptr);
}

std::unique_ptr<GVariant, decltype(&g_variant_unref)> BusPeer::call(const std::string& name, const char* path,
                                                                    const char* interface, const char* method,
                                                                    GVariant* arguments) {
  struct Reply {
    bool arrived = false;
    GVariant* value = nullptr;
  } reply;
  g_dbus_connection_call(
      connection_, name.c_str(), path, interface, method, arguments, nullptr, G_DBUS_CALL_FLAGS_NONE, -1,
      nullptr,
      [](GObject* source, GAsyncResult* result, gpointer data) {
        auto* waiting = static_cast<Reply*>(data);
        waiting->value = g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, nullptr);
        waiting->arrived = true;
      },
      &reply);
  while (!reply.arrived) g_main_context_iteration(nullptr, TRUE);
  return {reply.value, &g_variant_unref};
}

/// Runs on GDBus's own thread.
GDBusMessage* BusPeer::seen(GDBusConnection* connection, GDBusMessage* message, int incoming, void* self) {
  auto& peer = *static_cast<BusPeer*>(self);
  const Answer answer = [&peer] {
    const std::lock_guard<std::mutex> lock(peer.mutex_);
    return peer.answer_;
  }();
  if (incoming == FALSE || !answer ||
      g_dbus_message_get_message_type(message) != G_DBUS_MESSAGE_TYPE_METHOD_CALL) {
    return message;
  }
  if (peer.isSilent_) {
    ++peer.unanswered_;
    g_object_unref(message);
    return nullptr;
  }
  GVariant* value = answer(g_dbus_message_get_member(message), g_dbus_message_get_body(message));
  GDBusMessage* reply =
      value != nullptr ? g_dbus_message_new_method_reply(message)
                       : g_dbus_message_new_method_error_literal(message, "org.lexwend.Refused", "refused");
  if (value != nullptr) g_dbus_message_set_body(reply, value);
  g_dbus_connection_send_message(connection, reply, G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr, nullptr);
  g_object_unref(reply);
  g_object_unref(message);
  return nullptr;
}

}  // namespace lexwend::platform
