// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "platform/linux/display/front_window.h"
#include "platform/linux/display/shortcut_key_events.h"
#include "platform/linux/keymap/shortcuts.h"
#include "platform/linux/wayland/key_player.h"

namespace lexwend::platform {

/// Keys that the compositor lets this program press. Command is Control here, Option is Alt, and Control is
/// Super. Main thread only. A call waits for the compositor, and for nobody else.
///
/// A shortcut is refused in a terminal, in a prompt for a password, and in an editor in which copying ends
/// the selection (window_classes.h). A copy is refused when `mayCopy` returns false, a paste when `mayPaste`
/// does. A paste is refused when the window in front is not the one at the time of the copy. Where the window
/// can be given the keyboard, it has it for the paste also when the user changes windows between that look
/// and the keys.
class WaylandKeyEvents : public ShortcutKeyEvents {
 public:
  struct Needs {
    /// The window that has the keyboard; nothing where the compositor does not tell.
    std::function<std::optional<FrontWindow>()> frontWindow;
    std::function<bool()> mayCopy;   ///< asked right before a copy
    std::function<bool()> mayPaste;  ///< asked right before a paste
    /// Refuses a copy where the compositor does not tell the window: it may be a terminal.
    bool refusesUnknownWindows = false;
    /// Readies a key that gives that window the keyboard. Asked before a paste; null where no compositor does
    /// such a thing.
    std::function<std::optional<FocusKey>(std::int64_t window)> focusKey{};
  };
  /// Without a player no event can be made.
  WaylandKeyEvents(Needs needs, std::unique_ptr<KeyPlayer> player);

  /// Always none: a compositor tells only the program in front what the user holds. It makes no difference to
  /// the keys that are played here.
  EventFlags flagsState(EventSourceState state) override;
  EventSourceRef createSource(EventSourceState state) override;
  std::unique_ptr<KeyEvent> createKeyboardEvent(const EventSourceRef& source, KeyCode keyCode,
                                                bool keyDown) override;
  PostResult post(EventTap tap, const KeyEvent& event) override;

 private:
  bool mayPlay(Shortcut shortcut);
  void note(Shortcut shortcut, const std::optional<FrontWindow>& front);

  Needs needs_;
  std::unique_ptr<KeyPlayer> player_;
  std::optional<std::int64_t> copiedFrom_;  // the window
};

}  // namespace lexwend::platform
