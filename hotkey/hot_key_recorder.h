// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/key_monitor.h"
#include "platform/recorder_window.h"

namespace lexwend {

/// The small window in which the user presses a new combination for the fix. While it is open, it takes every
/// key press of the agent, shows the combination and judges it. Saving writes it to the settings. Its owner
/// unregisters the hot key before and registers it after. Used once. Main thread only.
class HotKeyRecorderWindowController : public std::enable_shared_from_this<HotKeyRecorderWindowController> {
 public:
  /// Called exactly once, after the window has closed. `saved` says whether a combination was written. May
  /// destroy the controller.
  using Completion = std::function<void(bool saved)>;

  /// Builds the window with the stored combination in it. Does not show it.
  static std::shared_ptr<HotKeyRecorderWindowController> create(Completion onDone);

  HotKeyRecorderWindowController(const HotKeyRecorderWindowController&) = delete;
  HotKeyRecorderWindowController& operator=(const HotKeyRecorderWindowController&) = delete;

  /// Starts capturing, brings the application to the front and shows the window.
  void present();

  /// Nothing when the combination may be used, else the reason in the user's language. `name` is the display
  /// name of the combination.
  static std::optional<std::string> validate(platform::KeyCode code, platform::Modifiers mods,
                                             std::string_view name);

 private:
  struct Combination {
    platform::KeyCode code;
    platform::Modifiers mods;
  };

  explicit HotKeyRecorderWindowController(Completion onDone);

  void buildUI();
  void showCurrent();
  platform::KeyDisposition keyDown(const platform::KeyDownEvent& event);
  void record(platform::KeyCode code, platform::Modifiers mods);
  void save();
  void cancel();
  void windowWillClose();
  void finish(bool saved);

  std::unique_ptr<platform::RecorderWindow> window_;
  platform::Registration monitor_;
  std::optional<Combination> recorded_;  // only ever a valid one
  bool finished_ = false;
  Completion onDone_;
};

}  // namespace lexwend
