// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <utility>

#include "platform/recorder_window.h"

namespace lexwend::platform {

/// The recorder as a window of the toolkit. One point of the look is one device-independent pixel. Colors
/// follow the desktop's palette. While the window has the focus it holds the keyboard, so that combinations
/// of the desktop reach it. A text that does not fit its frame is drawn smaller until it fits. The
/// application object must exist.
class LinuxRecorderWindows : public RecorderWindows {
 public:
  /// Keeps the combinations of the desktop from coming to it, or lets them come again.
  using HoldShortcuts = std::function<void(bool)>;

  /// Without the function the toolkit holds the keyboard.
  explicit LinuxRecorderWindows(HoldShortcuts holdShortcuts = {})
      : holdShortcuts_(std::move(holdShortcuts)) {}
  std::unique_ptr<RecorderWindow> create(const RecorderWindowLook& look,
                                         RecorderWindowEvents events) override;

 private:
  HoldShortcuts holdShortcuts_;
};

}  // namespace lexwend::platform
