// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>

#include "platform/keys.h"

namespace lexwend::platform {

/// Which table of key states is asked or written.
enum class EventSourceState : std::int32_t { combinedSession = 0, hidSystem = 1 };
/// Where a posted event enters the system.
enum class EventTap : std::uint32_t { hid = 0 };

/// An event source. Opaque.
class EventSource {
 public:
  virtual ~EventSource() = default;
};
using EventSourceRef = std::shared_ptr<const EventSource>;

/// One simulated key press or release, not yet posted.
class KeyEvent {
 public:
  virtual ~KeyEvent() = default;
  /// Exactly these modifiers, whatever the user holds.
  virtual void setFlags(EventFlags flags) = 0;
};

/// What became of an event that was to be posted.
enum class PostResult {
  posted,
  refused,  ///< nothing was sent: a shortcut would do harm, or cannot do what it is for
};

/// Simulated typing. Main thread only. Command with kKeyC stands for the system's own shortcut for copying,
/// and with kKeyV for pasting, whichever keys those are there. No call waits for another application.
class KeyEvents {
 public:
  virtual ~KeyEvents() = default;
  /// The modifiers that are down now.
  virtual EventFlags flagsState(EventSourceState state) = 0;
  /// Null when the system makes none; events can be made without one.
  virtual EventSourceRef createSource(EventSourceState state) = 0;
  /// A key event; null when it cannot be made. A null source is allowed.
  virtual std::unique_ptr<KeyEvent> createKeyboardEvent(const EventSourceRef& source, KeyCode keyCode,
                                                        bool keyDown) = 0;
  /// Posts the event; returns without waiting for the application to handle it. A host may refuse to press a
  /// key, never to release one that was pressed. macOS refuses nothing. Linux refuses a copy where the
  /// clipboard could not be given back, where nothing is selected, or where the application does something
  /// else on it; a paste where another window is in front than the one that was copied from; and both where
  /// no key types what the shortcut needs.
  virtual PostResult post(EventTap tap, const KeyEvent& event) = 0;
};

/// The service of the installed host.
KeyEvents& keyEvents();

}  // namespace lexwend::platform
