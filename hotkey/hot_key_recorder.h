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

/// The small window in which the user presses a new combination for the fix. While it is open it takes every
/// key press of the agent, shows the combination, judges it, and on saving writes it to the settings. It does
/// not register hot keys: its owner does, before and after. Used once. Main thread only.
class HotKeyRecorderWindowController : public std::enable_shared_from_this<HotKeyRecorderWindowController> {
 public:
  /// Told exactly once, when the window has closed, whether a combination was written. May let go of the
  /// controller.
  using Completion = std::function<void(bool saved)>;

  /// Builds the window, not yet shown, with the stored combination in it.
  static std::shared_ptr<HotKeyRecorderWindowController> create(Completion onDone);

  HotKeyRecorderWindowController(const HotKeyRecorderWindowController&) = delete;
  HotKeyRecorderWindowController& operator=(const HotKeyRecorderWindowController&) = delete;

  /// Starts capturing, brings the application to the front and shows the window.
  void present();

  /// Nothing when the combination may be used, else why not, in the user's language. `name` is its display
  /// name.
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
  platform::KeyMonitorTokenRef monitor_;
  std::optional<Combination> recorded_;  // only ever a valid one
  bool finished_ = false;
  Completion onDone_;
};

}  // namespace lexwend
