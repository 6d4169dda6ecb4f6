// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

#include <xcb/xcb.h>

#include "platform/key_events.h"
#include "platform/linux/display/x_application.h"

namespace lexwend::platform {

/// A shortcut that was sent to a program.
struct PlayedShortcut {
  XApplication application;
  /// The window of it that was in front.
  xcb_window_t window = XCB_WINDOW_NONE;
  /// The time before its first key.
  std::chrono::steady_clock::time_point time;
  /// The process of that window; nothing where the display does not tell it.
  std::optional<std::uint32_t> process = std::nullopt;
};

/// Simulated keys that remember which copy and which paste were sent last. Main thread only.
class ShortcutKeyEvents : public KeyEvents {
 public:
  const std::optional<PlayedShortcut>& lastCopy() const { return lastCopy_; }
  const std::optional<PlayedShortcut>& lastPaste() const { return lastPaste_; }

 protected:
  void noteCopy(const PlayedShortcut& played) { lastCopy_ = played; }
  void notePaste(const PlayedShortcut& played) { lastPaste_ = played; }

 private:
  std::optional<PlayedShortcut> lastCopy_;
  std::optional<PlayedShortcut> lastPaste_;
};

}  // namespace lexwend::platform
