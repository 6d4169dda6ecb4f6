// SPDX-License-Identifier: MIT
#pragma once

#include "platform/recorder_window.h"

namespace lexwend::platform {

/// The recorder as a window of the toolkit, one point of the look being one device-independent pixel. Colors
/// follow the desktop's palette. A text that does not fit its frame in the desktop's font is set smaller
/// until it does. The application object must exist.
class LinuxRecorderWindows : public RecorderWindows {
 public:
  std::unique_ptr<RecorderWindow> create(const RecorderWindowLook& look,
                                         RecorderWindowEvents events) override;
};

}  // namespace lexwend::platform
