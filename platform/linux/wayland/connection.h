// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <poll.h>

struct wl_display;
struct wl_interface;
struct wl_registry;
struct wl_seat;

namespace lexwend::platform {

/// A connection to the Wayland compositor that WAYLAND_DISPLAY names. One thread at a time. Its events are
/// handled within the calls below.
class WaylandConnection {
 public:
  using Clock = std::chrono::steady_clock;

  /// Null when there is no compositor, when it does not answer within a second, and when it has no seat.
  static std::unique_ptr<WaylandConnection> open();
  ~WaylandConnection();
  WaylandConnection(const WaylandConnection&) = delete;
  WaylandConnection& operator=(const WaylandConnection&) = delete;

  wl_display* display() const { return display_; }
  /// The first seat: the keyboard and the clipboards of the user.
  wl_seat* seat() const { return seat_; }
  /// The version of a global object that the compositor offers; nothing when it offers none.
  std::optional<std::uint32_t> versionOf(const std::string& interface) const;
  /// Binds a global object in that version or an older one; null when the compositor offers none. The caller
  /// owns the proxy.
  void* bind(const wl_interface& interface, std::uint32_t version);

  /// False after the connection was lost, for whatever reason.
  bool isConnected() const;
  /// For somebody who takes it over.
  int descriptor() const;
  /// From now on the connection counts as lost.
  void abandon() { isLost_ = true; }
  /// Sends what was requested, without waiting.
  void flush();
  /// Handles what has arrived, without waiting; whether there was anything.
  bool handleEvents();
  /// Waits until an event has come, or one of the others is ready, or the time has come (nothing: for ever).
  /// Handles nothing. While the connection is lost it waits for the others.
  void wait(std::vector<pollfd>& others, std::optional<Clock::time_point> until);
  /// Handles events until one more has come, at most until the time; false when none has.
  bool waitForEvents(Clock::time_point until);
  /// Waits until the compositor has handled every request so far, and handles the events that came before its
  /// answer. False when it does not answer within a second; until it answers again a tenth of that is waited
  /// for it. What was requested it handles when it goes on.
  bool roundTrip();

 private:
  explicit WaylandConnection(wl_display* display);
  static void globalAppears(void* self, wl_registry* registry, std::uint32_t name, const char* interface,
                            std::uint32_t version);
  static void globalGoes(void* self, wl_registry* registry, std::uint32_t name);

  struct Global {
    std::uint32_t name;
    std::uint32_t version;
  };
  wl_display* display_;
  wl_registry* registry_ = nullptr;
  wl_seat* seat_ = nullptr;
  std::map<std::string, Global> globals_;
  bool isLost_ = false;
  bool isSilent_ = false;
};

}  // namespace lexwend::platform
