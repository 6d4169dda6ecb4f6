// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/fake/fake_system.h"
#include "platform/recorder_window.h"

namespace lexwend::platform {

/// What the user sees of a recorder window.
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

  /// Controls of a test.
  /// The window on the screen; null when none is.
  const FakeRecorderState* window() const;
  /// How many windows were ever made, and how many still exist.
  std::size_t made() const { return states_.size(); }
  std::size_t alive() const;
  /// The user's clicks. On no window, or on a disabled button, they are a complaint and false.
  bool clickSave();
  bool clickCancel();
  bool clickCloseBox();
  /// Happens while the window on the screen closes, once the program has heard of it.
  void whileClosing(std::function<void()> meanwhile);

 private:
  std::shared_ptr<FakeRecorderState> shown(const char* whatFor);

  FakeSystem& system_;
  std::vector<std::weak_ptr<FakeRecorderState>> states_;
};

}  // namespace lexwend::platform
