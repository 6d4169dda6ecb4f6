// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/fake/fake_system.h"
#include "platform/recorder_window.h"

namespace lexwend::platform {

/// The state of a recorder window as the user sees it.
struct FakeRecorderState {
  RecorderWindowLook look;
  std::string combination;
  std::string message;
  ColorRole messageColor = ColorRole::label;
  bool saveEnabled = true;
  bool shown = false;   ///< on the screen and key
  bool closed = false;  ///< was closed; never shown again
  RecorderWindowEvents events;
  std::function<void()> whileClosing;
};

/// Recorder windows in memory.
class FakeRecorderWindows : public RecorderWindows {
 public:
  explicit FakeRecorderWindows(FakeSystem& system) : system_(system) {}

  std::unique_ptr<RecorderWindow> create(const RecorderWindowLook& look,
                                         RecorderWindowEvents events) override;

  // Controls of a test.
  /// The window on the screen; null when none is.
  const FakeRecorderState* window() const;
  /// How many windows were ever made, and how many still exist.
  std::size_t made() const { return states_.size(); }
  std::size_t alive() const;
  /// The user clicks. Without a window, or on a disabled button, the click is a complaint and the result
  /// false.
  bool clickSave();
  bool clickCancel();
  bool clickCloseBox();
  /// Runs while the window on the screen closes, after the program was told.
  void whileClosing(std::function<void()> meanwhile);

 private:
  std::shared_ptr<FakeRecorderState> shown(const char* whatFor);

  FakeSystem& system_;
  std::vector<std::weak_ptr<FakeRecorderState>> states_;
};

}  // namespace lexwend::platform
