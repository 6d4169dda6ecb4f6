// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>

#include "platform/keys.h"

namespace lexwend::platform {

/// A key pressed while a window of this application has the keyboard.
struct KeyDownEvent {
  KeyCode keyCode{};
  EventFlags modifierFlags{};  ///< every flag of the event, caps lock and function included
};
/// What becomes of the event after the monitor saw it.
enum class KeyDisposition { consumed, passedOn };

/// An installed monitor; its destruction removes it.
class KeyMonitorToken {
 public:
  virtual ~KeyMonitorToken() = default;
};
using KeyMonitorTokenRef = std::unique_ptr<KeyMonitorToken>;

/// Key presses on their way to this application's own windows. Main thread only.
class KeyMonitor {
 public:
  virtual ~KeyMonitor() = default;
  /// The handler sees every key press before any control does; it may remove the monitor.
  [[nodiscard]] virtual KeyMonitorTokenRef addLocalKeyDownMonitor(
      std::function<KeyDisposition(const KeyDownEvent&)> handler) = 0;
};

/// The service of the installed host.
KeyMonitor& keyMonitor();

}  // namespace lexwend::platform
