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

/// What became of an event that was passed to post().
enum class PostResult {
  posted,
  refused,  ///< nothing was sent: the shortcut would do harm or cannot work
};

/// Simulated typing. Main thread only. Command with kKeyC is the system's own shortcut for copying, and
/// Command with kKeyV that for pasting, whichever keys those are there. No call waits for another
/// application.
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
  /// Posts the event. Returns without waiting for the application to handle it. A host may refuse to press a
  /// key, but never to release a key that it pressed. macOS refuses nothing. Linux refuses a copy when the
  /// clipboard could not be restored, when nothing is selected, when the application has still to take the
  /// last paste, and when it uses the shortcut for something else. It refuses a paste when the window in
  /// front is not the one that was copied from. It refuses both when no key types what the shortcut needs.
  virtual PostResult post(EventTap tap, const KeyEvent& event) = 0;
};

/// The service of the installed host.
KeyEvents& keyEvents();

}  // namespace lexwend::platform
