// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

#include "platform/keys.h"
#include "platform/registration.h"

namespace lexwend::platform {

/// A key pressed while a window of this application has the keyboard.
struct KeyDownEvent {
  KeyCode keyCode{};
  EventFlags modifierFlags{};  ///< every flag of the event, caps lock and function included
};
/// What becomes of the event after the handler has seen it.
enum class KeyDisposition { consumed, passedOn };

/// Key presses on their way to this application's own windows. Main thread only. Nothing here blocks.
class KeyMonitor {
 public:
  virtual ~KeyMonitor() = default;
  /// The handler sees every key press before any control does. The end of the registration removes
  /// the monitor.
  [[nodiscard]] virtual Registration addLocalKeyDownMonitor(
      std::function<KeyDisposition(const KeyDownEvent&)> handler) = 0;
};

/// The service of the installed host.
KeyMonitor& keyMonitor();

}  // namespace lexwend::platform
