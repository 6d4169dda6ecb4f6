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

/// Simulated typing. Main thread only. A host plays the system's own copy and paste shortcuts for Command
/// with kKeyC and kKeyV, whichever keys those are there.
class KeyEvents {
 public:
  virtual ~KeyEvents() = default;
  /// The modifiers that are down now.
  virtual EventFlags flagsState(EventSourceState state) = 0;
  /// Null when the system makes none.
  virtual EventSourceRef createSource(EventSourceState state) = 0;
  /// A key event; null when it cannot be made, also when a shortcut sent to the
  /// front application would do harm there (a terminal, say). A null source is allowed.
  virtual std::unique_ptr<KeyEvent> createKeyboardEvent(const EventSourceRef& source, KeyCode keyCode,
                                                        bool keyDown) = 0;
  /// Posts the event; returns without waiting for the application to handle it.
  virtual void post(EventTap tap, const KeyEvent& event) = 0;
};

/// The service of the installed host.
KeyEvents& keyEvents();

}  // namespace lexwend::platform
