// SPDX-License-Identifier: MIT
#pragma once

#include "platform/running_instance.h"

namespace lexwend::platform::mac {

/// There is no way to the agent that runs yet. Main thread only.
class MacRunningInstance : public RunningInstance {
 public:
  InstanceAnswer pass(InstanceCommand /*command*/) override { return InstanceAnswer::notHere; }
  Registration receive(std::function<bool(InstanceCommand)> /*handler*/) override { return {}; }
  Registration dropFixes() override { return {}; }
};

}  // namespace lexwend::platform::mac
