// SPDX-License-Identifier: MIT
#pragma once

#include <optional>

#include "platform/key_monitor.h"

class QKeyEvent;

namespace lexwend::platform {

/// A key press of the toolkit in the terms of the service: Control is Command here, Alt is Option and Super
/// is Control. Nothing for a modifier key alone and for a key that has no place on a Mac keyboard.
std::optional<KeyDownEvent> keyDownEventOf(const QKeyEvent& event);

/// Sees the key presses that arrive at windows of this application, also those that would move the focus,
/// press a button or be a shortcut; not those for an open menu or an alert. Keys that have no place on a Mac
/// keyboard are kept from the windows unseen. The application object must exist.
class LinuxKeyMonitor : public KeyMonitor {
 public:
  [[nodiscard]] KeyMonitorTokenRef addLocalKeyDownMonitor(
      std::function<KeyDisposition(const KeyDownEvent&)> handler) override;
};

}  // namespace lexwend::platform
