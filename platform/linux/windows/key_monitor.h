// SPDX-License-Identifier: MIT
#pragma once

#include <optional>

#include "platform/key_monitor.h"

class QKeyEvent;

namespace lexwend::platform {

/// A key press of the toolkit in the terms of the service: Control is Command here, Alt is Option and Super
/// is Control. Nothing for a modifier key alone and for a key that a Mac keyboard does not have.
std::optional<KeyDownEvent> keyDownEventOf(const QKeyEvent& event);

/// Sees the key presses that arrive at windows of this application, before they move the focus, press a
/// button or act as a shortcut. Does not see those for an open menu or an alert. A key that a Mac keyboard
/// does not have reaches neither the monitor nor the window. The application object must exist.
class LinuxKeyMonitor : public KeyMonitor {
 public:
  [[nodiscard]] Registration addLocalKeyDownMonitor(
      std::function<KeyDisposition(const KeyDownEvent&)> handler) override;
};

}  // namespace lexwend::platform
