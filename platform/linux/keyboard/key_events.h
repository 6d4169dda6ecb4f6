// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "platform/key_events.h"
#include "platform/linux/display/x11_connection.h"
#include "platform/linux/display/x_application.h"
#include "platform/linux/keyboard/keyboard_devices.h"

namespace lexwend::platform {

/// What an event stands for.
enum class Shortcut { none, copy, paste };

/// Keys simulated with XTEST. Command is Control here, Option is Alt, and Control is Super. Main thread only.
/// The calls wait for the X server's answers and for nobody else.
///
/// Command with C is played as Control+Insert, Command with V as Shift+Insert: the letters move with the
/// active layout, and with a Hebrew layout alone most applications know neither Control+C nor Control+V. The
/// key is the one that types Insert in the keymap that is used.
///
/// A shortcut is refused
/// - when no key types Insert;
/// - in a terminal, where the copy shortcut stops the running program or types an escape sequence, in a
/// prompt
///   for a password, and in an editor in which copying ends the selection (window_classes.h);
/// - a copy, when `mayCopy` says no;
/// - a paste, when another window is in front or has the input focus than when the copy was played.
///
/// A modifier that the user holds is released before a key is pressed: the key is to have its own modifiers
/// only. It is not pressed again afterwards, since the user may have released it meanwhile and it would stay
/// down. For the applications a held modifier is up until it is pressed anew.
///
/// The keys are played on the keyboard that was last used (keyboard_devices.h). Keys of the server's own
/// keyboard of simulated keys, which may have no Hebrew, would take the selected layout away from the user.
class LinuxKeyEvents : public KeyEvents {
 public:
  /// `mayCopy` is asked right before a copy is played; without it every copy may be. Without a display no
  /// event can be made.
  explicit LinuxKeyEvents(std::shared_ptr<X11Connection> x11, std::function<bool()> mayCopy = {});

  /// The modifier keys that are held; locked and latched modifiers do not count. Both states are the same.
  EventFlags flagsState(EventSourceState state) override;
  EventSourceRef createSource(EventSourceState state) override;
  std::unique_ptr<KeyEvent> createKeyboardEvent(const EventSourceRef& source, KeyCode keyCode,
                                                bool keyDown) override;
  PostResult post(EventTap tap, const KeyEvent& event) override;

  /// The copy and the paste that were played last.
  const std::optional<PlayedShortcut>& lastCopy() const { return lastCopy_; }
  const std::optional<PlayedShortcut>& lastPaste() const { return lastPaste_; }

 private:
  struct Front {
    xcb_window_t active = XCB_WINDOW_NONE;
    xcb_window_t focus = XCB_WINDOW_NONE;
    bool operator==(const Front&) const = default;
  };
  Front front();
  bool mayPlay(Shortcut shortcut, const Front& front);
  void note(Shortcut shortcut, const Front& front);
  void releaseHeldModifiers();
  void play(std::uint8_t coreType, xcb_keycode_t key);

  std::shared_ptr<X11Connection> x11_;
  std::function<bool()> mayCopy_;
  // As they were when a key was pressed, so that its release lets the same keys go.
  KeyboardDevices devices_;
  ShortcutKeys keys_;
  std::optional<Front> copiedFrom_;
  std::optional<PlayedShortcut> lastCopy_;
  std::optional<PlayedShortcut> lastPaste_;
};

}  // namespace lexwend::platform
