// SPDX-License-Identifier: MIT
#pragma once

#include "platform/recorder_window.h"

namespace lexwend::platform {

/// The recorder as a window of the toolkit. One point of the look is one device-independent pixel. Colors
/// follow the desktop's palette. While the window has the focus it holds the keyboard, so that combinations
/// of the desktop reach it; a Wayland compositor is asked for them, and may ask the user. A text that does
/// not fit its frame is drawn smaller until it fits. The application object must exist.
class LinuxRecorderWindows : public RecorderWindows {
 public:
  std::unique_ptr<RecorderWindow> create(const RecorderWindowLook& look,
                                         RecorderWindowEvents events) override;
};

}  // namespace lexwend::platform
