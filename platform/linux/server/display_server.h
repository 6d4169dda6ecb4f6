// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/input_sources.h"
#include "platform/keys.h"
#include "platform/linux/display/shortcut_key_events.h"
#include "platform/linux/display/x11_connection.h"
#include "platform/linux/keymap/hot_key_keeper.h"
#include "platform/linux/selection/selections.h"
#include "platform/linux/session/session_notice.h"

namespace lexwend::platform {

/// What the services ask of the program that has the screen and the keyboard: an X server or a Wayland
/// compositor. A service that it makes may be used as long as the display server lives. Main thread only. A
/// question waits for the display server, for a second at most.
class DisplayServer {
 public:
  /// What a display server needs of its host.
  struct Needs {
    /// Presses and releases a key with modifiers.
    std::function<void(KeyCode, EventFlags)> play;
    /// The process of the window that the accessibility bus calls active.
    std::function<std::optional<std::uint32_t>()> activeProcess;
    std::function<bool()> thisIsTheAgent;
    std::function<bool()> anotherIsTheAgent;
  };
  /// What answers here, in this order: sway, KWin, mutter, any other compositor that lets a program use the
  /// clipboard and press keys, and else the X server of DISPLAY, which need not be there.
  static std::unique_ptr<DisplayServer> open(Needs needs);

  DisplayServer() = default;
  virtual ~DisplayServer() = default;
  DisplayServer(const DisplayServer&) = delete;
  DisplayServer& operator=(const DisplayServer&) = delete;

  virtual std::unique_ptr<InputSourceService> makeInputSources() = 0;
  virtual std::unique_ptr<HotKeyKeeper> makeHotKeyService() = 0;
  /// `mayCopy` is asked right before a copy, `mayPaste` right before a paste.
  virtual std::unique_ptr<ShortcutKeyEvents> makeKeyEvents(std::function<bool()> mayCopy,
                                                           std::function<bool()> mayPaste) = 0;
  virtual Selections selections() = 0;

  /// Whether keys, selections and layouts of the session can be used.
  virtual bool mayControl() = 0;
  /// The process of the window that has the keyboard; nothing when none has it or nobody tells.
  virtual std::optional<std::uint32_t> frontProcess() = 0;
  /// The class of that window.
  virtual std::optional<std::string> frontWindowClass() = 0;
  /// Whether it tells which window has the keyboard.
  virtual bool tellsFront() { return true; }
  /// Whether it says that the screen is locked.
  virtual bool screenIsLocked() { return false; }

  virtual bool isCompositor() const = 0;
  /// The connection that the services of X share; null without an X server and for a compositor.
  virtual std::shared_ptr<X11Connection> x11() { return nullptr; }
  /// Asks for the keyboard for this program's window.
  virtual void focusOwnWindow() {}
  /// What to say of a hot key service to which no press can come.
  virtual const SessionLimit& hotKeyLimit() { return kNoHotKey; }
  /// Whether it lets this program press keys and know the windows.
  virtual bool grantsAll() { return true; }
  /// Whether it would let the agent do so, if an entry of an application asked for it.
  virtual bool grantIsMissing() { return false; }
  /// Whether grant() can write such an entry for that program.
  virtual bool canGrant(const std::string& /*program*/) { return false; }
  /// Writes it into the user's applications. It counts from the next start of the program. False on failure.
  virtual bool grant(const std::string& /*program*/) { return false; }
};

}  // namespace lexwend::platform
