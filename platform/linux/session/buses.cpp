// SPDX-License-Identifier: MIT
#include "platform/linux/session/buses.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/linux/session/glib_ref.h"
#include "platform/linux/session/user_folders.h"

namespace lexwend::platform {
namespace {

constexpr std::chrono::milliseconds kFirstPause(1000);
constexpr std::chrono::milliseconds kLongestPause(32000);

/// Empty when there is none. GDBus is not asked: it would start a bus of its own on an X11 display without
/// one.
std::string sessionBusAddress() {
  const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
  if (address != nullptr && address[0] != '\0') return address;
  const auto folder = user_folders::runtimeFolder();
  return folder.empty() ? "" : "unix:path=" + folder + "/bus";
}

std::string systemBusAddress() {
  char* const address = g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr);
  std::string text = address != nullptr ? address : "";
  g_free(address);
  return text;
}

class Bus {
 public:
  explicit Bus(std::string (*findAddress)()) : findAddress_(findAddress) {}

  GDBusConnection* connection() {
    if (!waited_) {
      waited_ = true;
      begin();
      if (attempt_ != nullptr) attempt_->waitUntilOver();
      takeResult();
    }
    return connection_.get();
  }

  BusObservation observe(BusHandler handler) {
    begin();
    auto observation = std::make_shared<const BusHandler>(std::move(handler));
    observers_.push_back(observation);
    (*observation)(connection_.get());
    return observation;
  }

 private:
  /// One try to connect. It has a thread of its own, since a bus that takes the connection and then says
  /// nothing holds it up for as long as it likes.
  class Attempt {
   public:
    void run(const std::string& address) {
      constexpr auto kFlags = GDBusConnectionFlags(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                   G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
      GDBusConnection* made =
          g_dbus_connection_new_for_address_sync(address.c_str(), kFlags, nullptr, nullptr, nullptr);
      {
        const std::lock_guard lock(mutex_);
        result_.reset(made);
        isOver_ = true;
      }
      over_.notify_one();
    }
    void waitUntilOver() {
      std::unique_lock lock(mutex_);
      over_.wait_for(lock, std::chrono::milliseconds(kBusCallTimeout), [this] { return isOver_; });
    }
    bool isOver() {
      const std::lock_guard lock(mutex_);
      return isOver_;
    }
    GObjectRef<GDBusConnection> takeResult() {
      const std::lock_guard lock(mutex_);
      return std::move(result_);
    }

   private:
    std::mutex mutex_;
    std::condition_variable over_;
    GObjectRef<GDBusConnection> result_;
    bool isOver_ = false;
  };

  void begin() {
    if (address_) return;
    address_ = findAddress_();
    if (!address_->empty()) connect();
  }

  void connect() {
    attempt_ = std::make_shared<Attempt>();
    // Detached: nobody could wait for the end of a thread that a silent bus holds up.
    std::thread([this, attempt = attempt_, address = *address_] {
      attempt->run(address);
      g_idle_add(
          [](gpointer bus) -> gboolean {
            static_cast<Bus*>(bus)->takeResult();
            return G_SOURCE_REMOVE;
          },
          this);
    }).detach();
  }

  /// Does nothing while the attempt goes on, or when its result was taken already.
  void takeResult() {
    if (attempt_ == nullptr || !attempt_->isOver()) return;
    connection_ = attempt_->takeResult();
    attempt_.reset();
    if (connection_ == nullptr) {
      tryAgainLater();
      return;
    }
    g_signal_connect(connection_.get(), "closed",
                     G_CALLBACK(+[](GDBusConnection*, gboolean, GError*, gpointer bus) {
                       static_cast<Bus*>(bus)->lost();
                     }),
                     this);
    if (g_dbus_connection_is_closed(connection_.get()) != FALSE) {
      lost();
      return;
    }
    pause_ = kFirstPause;
    tell(connection_.get());
  }

  void lost() {
    if (connection_ == nullptr) return;
    const auto former = std::move(connection_);  // stays until everybody knows
    g_signal_handlers_disconnect_by_data(former.get(), this);
    tell(nullptr);
    tryAgainLater();
  }

  void tryAgainLater() {
    g_timeout_add(
        static_cast<guint>(pause_.count()),
        [](gpointer bus) -> gboolean {
          static_cast<Bus*>(bus)->connect();
          return G_SOURCE_REMOVE;
        },
        this);
    pause_ = std::min(2 * pause_, kLongestPause);
  }

  void tell(GDBusConnection* connection) {
    std::erase_if(observers_, [](const auto& weak) { return weak.expired(); });
    const auto observers = observers_;  // a handler may end an observation or begin one
    for (const auto& weak : observers) {
      if (const auto observer = weak.lock()) (*observer)(connection);
    }
  }

  std::string (*findAddress_)();
  bool waited_ = false;
  std::optional<std::string> address_;  ///< as it was at first use; empty: there is no such bus
  std::shared_ptr<Attempt> attempt_;
  GObjectRef<GDBusConnection> connection_;
  std::chrono::milliseconds pause_ = kFirstPause;
  std::vector<std::weak_ptr<const BusHandler>> observers_;
};

// Never destroyed: a thread that connects may be there at the end of the program.
Bus& theSessionBus() {
  static Bus* const kBus = new Bus(sessionBusAddress);
  return *kBus;
}

Bus& theSystemBus() {
  static Bus* const kBus = new Bus(systemBusAddress);
  return *kBus;
}

}  // namespace

GDBusConnection* sessionBus() {
  return theSessionBus().connection();
}

GDBusConnection* systemBus() {
  return theSystemBus().connection();
}

BusObservation observeSessionBus(BusHandler handler) {
  return theSessionBus().observe(std::move(handler));
}

BusObservation observeSystemBus(BusHandler handler) {
  return theSystemBus().observe(std::move(handler));
}

}  // namespace lexwend::platform
