// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>

#include "platform/linux/display/front_window.h"
#include "platform/linux/wayland/connection.h"

struct org_kde_plasma_window;
struct org_kde_plasma_window_management;

namespace lexwend::platform {

/// The windows as KWin tells them (org_kde_plasma_window_management), those of X11 as well. One thread at a
/// time. Events are handled within the calls of the connection, which this must not outlive.
class KWinWindows {
 public:
  /// Null where KWin does not let this program know them.
  static std::unique_ptr<KWinWindows> open(WaylandConnection& connection);
  ~KWinWindows();
  KWinWindows(const KWinWindows&) = delete;
  KWinWindows& operator=(const KWinWindows&) = delete;

  /// The window that has the keyboard, as far as was told.
  std::optional<FrontWindow> active() const;
  /// Asks for the keyboard for the windows of that process.
  void activate(std::uint32_t process);

 private:
  struct Window;
  struct Listener;
  explicit KWinWindows(org_kde_plasma_window_management* management);
  void add(const char* identifier);
  void remove(org_kde_plasma_window* window);

  org_kde_plasma_window_management* management_;
  std::map<org_kde_plasma_window*, std::unique_ptr<Window>> windows_;
  std::int64_t lastNumber_ = 0;
};

}  // namespace lexwend::platform
