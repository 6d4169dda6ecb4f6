// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include <gio/gio.h>

namespace lexwend::platform {

/// A private message bus; from its construction to its destruction it is this process's session bus, and its
/// system bus as well.
class PrivateBus {
 public:
  PrivateBus();
  ~PrivateBus();
  PrivateBus(const PrivateBus&) = delete;
  PrivateBus& operator=(const PrivateBus&) = delete;

  const std::string& address() const { return address_; }

 private:
  GPid process_ = 0;
  std::string address_;
};

/// Another program on the session bus, which owns a name and answers with what the test says.
class BusPeer {
 public:
  /// What a method call or a property question gets; null refuses it. The interface
  /// "org.freedesktop.DBus.Properties" comes as "Get" and "Set" with their arguments.
  using Answer = std::function<GVariant*(const std::string& method, GVariant* arguments)>;

  BusPeer();
  ~BusPeer();
  BusPeer(const BusPeer&) = delete;
  BusPeer& operator=(const BusPeer&) = delete;

  void ownName(const std::string& name);
  void releaseName(const std::string& name);
  /// Answers every call at that path.
  void answer(Answer answer) {
    const std::lock_guard<std::mutex> lock(mutex_);
    answer_ = std::move(answer);
  }
  /// From now on calls get no answer, as those to a program that hangs, or answers again.
  void beSilent(bool silent) { isSilent_ = silent; }
  /// How many calls got none.
  int unanswered() const { return unanswered_; }
  void emit(const char* path, const char* interface, const char* signal, GVariant* arguments);
  /// Calls a method and iterates the main context until the answer is there; null on failure.
  std::unique_ptr<GVariant, decltype(&g_variant_unref)> call(const std::string& name, const char* path,
                                                             const char* interface, const char* method,
                                                             GVariant* arguments);
  GDBusConnection* connection() { return connection_; }

 private:
  static GDBusMessage* seen(GDBusConnection* connection, GDBusMessage* message, int incoming, void* self);
  GDBusConnection* connection_;
  std::mutex mutex_;
  Answer answer_;
  std::atomic<bool> isSilent_ = false;
  std::atomic<int> unanswered_ = 0;
};

}  // namespace lexwend::platform
