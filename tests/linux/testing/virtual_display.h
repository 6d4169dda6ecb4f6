// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include <sys/types.h>
#include <xcb/xcb.h>

namespace lexwend::platform {

/// A private X server; from its construction to its destruction it is the display of DISPLAY.
class VirtualDisplay {
 public:
  VirtualDisplay();
  ~VirtualDisplay();
  VirtualDisplay(const VirtualDisplay&) = delete;
  VirtualDisplay& operator=(const VirtualDisplay&) = delete;

  /// Configures the keyboard as setxkbmap does: "us,il" and variants ",lyx". Fails the test when that fails.
  static void setLayouts(const std::string& layouts, const std::string& variants = "");

 private:
  pid_t server_ = -1;
};

/// Blocks until the server has handled every earlier request of this connection.
void roundTrip(xcb_connection_t* connection);

/// Runs a program to its end; its exit status.
int runProgram(const std::string& commandLine);

/// Iterates the default main context until the condition holds; false when it does not within the time.
bool pumpUntil(const std::function<bool()>& condition,
               std::chrono::milliseconds time = std::chrono::seconds(10));

/// What a user at the keyboard does, on a connection of its own. Each call returns when the server has
/// handled it. Key codes are those of evdev.
class Typist {
 public:
  Typist();
  ~Typist();
  Typist(const Typist&) = delete;
  Typist& operator=(const Typist&) = delete;

  void press(int evdevKey);
  void release(int evdevKey);
  void tap(int evdevKey);
  /// The same on the server's own keyboard, where a person types, not on the one that simulated keys share.
  void pressPhysically(int evdevKey);
  void releasePhysically(int evdevKey);
  void tapPhysically(int evdevKey);
  /// Other layouts on the keyboard of simulated keys than on the server's own, as on a machine whose layouts
  /// come from the system's configuration.
  void setKeyboardsApart(const std::string& simulated, const std::string& own);
  /// Locks exactly these modifiers (core mask).
  void lockModifiers(std::uint8_t mask);
  std::uint8_t lockedModifiers();
  void lockGroup(std::uint8_t group);
  int group();
  /// True while the server holds the key for pressed.
  bool isDown(int evdevKey);

  xcb_connection_t* connection() { return connection_; }
  xcb_window_t root() const { return root_; }

 private:
  void fake(std::uint8_t type, int evdevKey, std::uint8_t device = 0);
  /// The server's own keyboard, or that of simulated keys.
  std::uint8_t keyboard(bool simulated);
  void sync();
  xcb_connection_t* connection_;
  xcb_window_t root_;
};

/// Another client that sees a key go down while somebody else has grabbed it. The server repeats a held key
/// for it too: each time counts once.
class PressCounter {
 public:
  explicit PressCounter(int evdevKey);
  ~PressCounter();
  PressCounter(const PressCounter&) = delete;
  PressCounter& operator=(const PressCounter&) = delete;

  int presses();
  /// Waits for so many presses, without running the main context; false when they do not come in time.
  bool reaches(int presses);

 private:
  xcb_connection_t* connection_;
  std::uint32_t key_;
  int presses_ = 0;
};

/// A window that has the input focus and remembers the keys that it gets.
class FocusedWindow {
 public:
  /// `windowClass` becomes WM_CLASS; empty for none.
  explicit FocusedWindow(const std::string& windowClass = "");
  ~FocusedWindow();
  FocusedWindow(const FocusedWindow&) = delete;
  FocusedWindow& operator=(const FocusedWindow&) = delete;

  xcb_window_t id() const { return window_; }
  /// Takes the input focus again.
  void focus();
  /// The key events so far: "+37 +118 -118 -37" (X key codes).
  std::string keys();

 private:
  xcb_connection_t* connection_;
  xcb_window_t window_;
  std::string keys_;
};

}  // namespace lexwend::platform
