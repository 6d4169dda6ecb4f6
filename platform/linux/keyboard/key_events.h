// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "platform/linux/display/shortcut_key_events.h"
#include "platform/linux/display/x11_connection.h"
#include "platform/linux/keyboard/keyboard_devices.h"
#include "platform/linux/keymap/shortcuts.h"

namespace lexwend::platform {

/// Keys simulated with XTEST. Command is Control here, Option is Alt, and Control is Super. Main thread only.
/// A call blocks until the X server has answered, and waits for nobody else.
///
/// The key of a shortcut is the one that types Insert in the keymap that is used.
///
/// A shortcut is refused when no key types Insert. It is refused in a terminal, where the copy shortcut stops
/// the running program or types an escape sequence. It is refused in a prompt for a password, and in an
/// editor in which copying ends the selection (window_classes.h). A copy is refused when `mayCopy` returns
/// false, a paste when `mayPaste` does. A paste is refused when the window in front or the input focus is not
/// the one at the time of the copy.
///
/// A modifier that the user holds is released before a key is pressed, because the key must have its own
/// modifiers only. It is not pressed again afterwards: the user may have released it meanwhile, and it would
/// stay down. So the applications see a held modifier as up until it is pressed again.
///
/// The keys are simulated on the keyboard that was last used (keyboard_devices.h). The server's own keyboard
/// of simulated keys may have no Hebrew, and its keys would then change the selected layout.
class LinuxKeyEvents : public ShortcutKeyEvents {
 public:
  /// `mayCopy` is called right before a copy and `mayPaste` right before a paste; without them each is
  /// allowed. Without a display no event can be made.
  explicit LinuxKeyEvents(std::shared_ptr<X11Connection> x11, std::function<bool()> mayCopy = {},
                          std::function<bool()> mayPaste = {});

  /// The modifier keys that are held. Locked and latched modifiers do not count. Both states give the same
  /// answer.
  EventFlags flagsState(EventSourceState state) override;
  EventSourceRef createSource(EventSourceState state) override;
  std::unique_ptr<KeyEvent> createKeyboardEvent(const EventSourceRef& source, KeyCode keyCode,
                                                bool keyDown) override;
  PostResult post(EventTap tap, const KeyEvent& event) override;

 private:
  struct Front {
    xcb_window_t active = XCB_WINDOW_NONE;
    xcb_window_t focus = XCB_WINDOW_NONE;
    bool operator==(const Front&) const = default;
  };
  Front front();
  bool mayPlay(Shortcut shortcut, const Front& front);
  void releaseHeldModifiers();
  void play(std::uint8_t coreType, xcb_keycode_t key);

  std::shared_ptr<X11Connection> x11_;
  std::function<bool()> mayCopy_;
  std::function<bool()> mayPaste_;
  // As they were when a key was pressed, so that its release releases the same keys.
  KeyboardDevices devices_;
  ShortcutKeys keys_;
  std::optional<Front> copiedFrom_;
};

}  // namespace lexwend::platform
