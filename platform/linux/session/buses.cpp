// SPDX-License-Identifier: MIT
#include "platform/linux/session/buses.h"

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <string>
#include <thread>

#include <sys/stat.h>

#include "platform/linux/session/glib_ref.h"
#include "platform/linux/session/user_folders.h"

namespace lexwend::platform {
namespace {

bool isSocket(const std::string& path) {
  struct stat state {};
  return ::stat(path.c_str(), &state) == 0 && S_ISSOCK(state.st_mode);
}

/// Asked before GDBus is, which would start a bus of its own on an X11 display that has none.
bool sessionBusIsKnown() {
  const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
  if (address != nullptr && address[0] != '\0') return true;
  const auto folder = user_folders::runtimeFolder();
  return !folder.empty() && isSocket(folder + "/bus");
}

/// Cancels what it was given to, unless it is destroyed before the time of a bus call has passed. GDBus has
/// no limit of its own for a bus that accepts a connection and then says nothing.
class Deadline {
 public:
  Deadline() : thread_([this] { wait(); }) {}
  ~Deadline() {
    {
      const std::lock_guard lock(mutex_);
      met_ = true;
    }
    changed_.notify_one();
    thread_.join();
  }
  Deadline(const Deadline&) = delete;
  Deadline& operator=(const Deadline&) = delete;

  GCancellable* cancellable() { return cancellable_.get(); }

 private:
  void wait() {
    std::unique_lock lock(mutex_);
    if (changed_.wait_for(lock, std::chrono::milliseconds(kBusCallTimeout), [this] { return met_; })) return;
    lock.unlock();
    g_cancellable_cancel(cancellable_.get());
  }

  GObjectRef<GCancellable> cancellable_{g_cancellable_new()};
  std::mutex mutex_;
  std::condition_variable changed_;
  bool met_ = false;
  std::thread thread_;  // last: it uses all of the above
};

GDBusConnection* connectionOf(GBusType type) {
  Deadline deadline;
  GDBusConnection* connection = g_bus_get_sync(type, deadline.cancellable(), nullptr);
  if (connection != nullptr) g_dbus_connection_set_exit_on_close(connection, FALSE);
  return connection;
}

}  // namespace

GDBusConnection* sessionBus() {
  static GDBusConnection* const kBus = sessionBusIsKnown() ? connectionOf(G_BUS_TYPE_SESSION) : nullptr;
  return kBus;
}

GDBusConnection* systemBus() {
  static GDBusConnection* const kBus = connectionOf(G_BUS_TYPE_SYSTEM);
  return kBus;
}

}  // namespace lexwend::platform
