// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <gio/gio.h>

#include "platform/linux/display/front_window.h"
#include "platform/linux/session/buses.h"
#include "platform/linux/session/glib_ref.h"
#include "platform/linux/wayland/connection.h"
#include "platform/linux/wayland/connection_watch.h"
#include "platform/registration.h"

struct xkb_keymap;

namespace lexwend::platform {

class FakeInput;
class KWinWindows;
class KeyPlayer;
class SeatKeymap;

/// An object of a service on the session bus.
struct BusObject {
  const char* name;
  const char* path;
  const char* interface;
};

/// The compositor KWin: its protocols for this program, over one connection, and its services on the session
/// bus. Main thread only. GLib's default main context handles its events. A question waits for KWin, for a
/// second at most.
///
/// KWin lets a program press keys and know the windows when an entry of an application that is installed
/// names the program's file and asks for that (X-KDE-Wayland-Interfaces). It reads the name of the file when
/// the program connects, and cannot once the program has made itself unreadable to others (PR_SET_DUMPABLE).
/// So the connection is made before, and kept.
class KWin {
 public:
  /// Null unless there is a compositor with data control, and it is the program that has the names of KWin
  /// and of the global shortcuts on the session bus.
  static std::shared_ptr<KWin> open();
  ~KWin();
  KWin(const KWin&) = delete;
  KWin& operator=(const KWin&) = delete;

  /// Null where KWin does not let this program press keys.
  std::unique_ptr<KeyPlayer> keyPlayer();
  /// Whether KWin lets this program press keys and know the windows.
  bool grantsAll() const;
  /// The window that has the keyboard; nothing when none has it or this program may not know.
  std::optional<FrontWindow> frontWindow();
  /// Gives the keyboard to this program's window, if it may.
  void focusOwnWindow();
  /// Whether the screen is locked.
  bool screenIsLocked();
  /// The layouts of the user, a group each; null where there is no keyboard.
  std::shared_ptr<xkb_keymap> keymap();
  /// The handler is called when another keymap has come.
  [[nodiscard]] Registration observeKeymap(std::function<void()> handler);

  /// Calls a method of an object; null where that failed or the answer is not of the type.
  GVariantRef call(const BusObject& object, const char* method, GVariant* arguments, const char* answerType);

 private:
  explicit KWin(std::unique_ptr<WaylandConnection> connection);

  Handlers<std::function<void()>> keymapHandlers_;  // before those whose making may bring a keymap
  std::unique_ptr<WaylandConnection> connection_;
  ConnectionWatch watch_;
  std::unique_ptr<SeatKeymap> seatKeymap_;
  std::unique_ptr<KWinWindows> windows_;  // null where this program may not know them
};

}  // namespace lexwend::platform
