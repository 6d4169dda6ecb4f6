// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string_view>

#include "platform/key_events.h"
#include "platform/linux/display/x11_connection.h"
#include "platform/linux/keyboard/keyboard_devices.h"

namespace lexwend::platform {

/// Whether a window of this class (WM_CLASS) shows a terminal. Letter case does not matter.
bool isTerminalClass(std::string_view windowClass);

/// Keys simulated with XTEST. Command is Control here, Option is Alt, and Control is Super.
///
/// Command with C is played as Control+Insert, Command with V as Shift+Insert: the letters move with the
/// active layout, and with a Hebrew layout alone most applications know neither Control+C nor Control+V.
///
/// A modifier that the user holds is let go before a key is pressed, since the key is to have its own
/// modifiers only. It is not pressed again afterwards: the user may have let go meanwhile, and it would stay
/// down. So to the applications a held modifier is up until it is pressed anew.
///
/// The keys are played on the keyboard that was last used (keyboard_devices.h). Keys of the server's own
/// keyboard of simulated keys, which may have no Hebrew, would take the selected layout away from the user.
///
/// No event is made while a terminal has the keyboard: there the copy shortcut stops the running program or
/// types an escape sequence, and no selection can be replaced in place.
class LinuxKeyEvents : public KeyEvents {
 public:
  /// `mayPost` is asked before an event is made; false refuses it. Without a display no event can be made.
  /// `refused` is told of each event that is not made.
  LinuxKeyEvents(std::shared_ptr<X11Connection> x11, std::function<bool()> mayPost,
                 std::function<void()> refused = {});

  /// The modifier keys that are held; locked and latched modifiers do not count. Both states are the same.
  EventFlags flagsState(EventSourceState state) override;
  EventSourceRef createSource(EventSourceState state) override;
  std::unique_ptr<KeyEvent> createKeyboardEvent(const EventSourceRef& source, KeyCode keyCode,
                                                bool keyDown) override;
  void post(EventTap tap, const KeyEvent& event) override;

 private:
  std::optional<xcb_keycode_t> keyToPost(KeyCode keyCode);
  void releaseHeldModifiers();
  void play(std::uint8_t coreType, xcb_keycode_t key);

  std::shared_ptr<X11Connection> x11_;
  std::function<bool()> mayPost_;
  std::function<void()> refused_;
  // As they were when a key was pressed, so that its release lets the same keys go.
  KeyboardDevices devices_;
  ModifierKeys modifierKeys_{};
};

}  // namespace lexwend::platform
