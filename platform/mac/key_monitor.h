// SPDX-License-Identifier: MIT
#pragma once

#include "platform/key_monitor.h"

namespace lexwend::platform::mac {

/// A local monitor of NSEvent for each handler. Main thread only.
class MacKeyMonitor : public KeyMonitor {
 public:
  Registration addLocalKeyDownMonitor(std::function<KeyDisposition(const KeyDownEvent&)> handler) override;
};

}  // namespace lexwend::platform::mac
