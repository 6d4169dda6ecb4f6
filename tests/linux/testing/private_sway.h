// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <set>
#include <string>

#include <sys/types.h>

#include "platform/linux/sway/ipc.h"
#include "tests/linux/testing/temporary_folder.h"
#include "tests/linux/typist/wayland_typist.h"

namespace lexwend::platform {

/// The compositor sway without a screen and without XWayland, with a keyboard (us,il); from its construction
/// to its destruction it is the compositor of WAYLAND_DISPLAY and SWAYSOCK, and there is no DISPLAY.
class PrivateSway {
 public:
  static constexpr std::uint32_t kWidth = 800;
  static constexpr std::uint32_t kHeight = 600;

  PrivateSway();
  ~PrivateSway();
  PrivateSway(const PrivateSway&) = delete;
  PrivateSway& operator=(const PrivateSway&) = delete;

  SwayIpc& ipc() { return *ipc_; }
  /// From now on it answers nothing, until it goes on.
  void stop();
  void goOn();
  /// Returns when sway lists them.
  void setLayouts(const std::string& layouts);
  /// The place of the active layout of the user's keyboard.
  unsigned group();
  /// Keys by their evdev codes; those of modifiers change the state of the keyboard.
  void press(int evdevKey) { play(evdevKey, true); }
  void release(int evdevKey) { play(evdevKey, false); }
  void tap(int evdevKey) {
    press(evdevKey);
    release(evdevKey);
  }

 private:
  void play(int evdevKey, bool down);
  test::TemporaryFolder folder_;
  pid_t process_ = -1;
  std::shared_ptr<SwayIpc> ipc_;
  std::unique_ptr<WaylandTypist> typist_;
  std::set<int> held_;
};

}  // namespace lexwend::platform
