// SPDX-License-Identifier: MIT
#pragma once

#include "platform/recorder_window.h"

namespace lexwend::platform::mac {

/// Makes windows of AppKit, which need the shared application. Main thread only.
class MacRecorderWindows : public RecorderWindows {
 public:
  std::unique_ptr<RecorderWindow> create(const RecorderWindowLook& look,
                                         RecorderWindowEvents events) override;
};

}  // namespace lexwend::platform::mac
