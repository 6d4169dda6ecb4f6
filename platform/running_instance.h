// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

#include "platform/registration.h"

namespace lexwend::platform {

/// What another process of the user may ask of the agent that runs.
enum class InstanceCommand { fix, menu, settings, quit };
/// What became of a command. `notHere`: this system has no way to the agent.
enum class InstanceAnswer { taken, dropped, nobodyRuns, unreachable, notHere };

/// The way from one process of this program to the agent that runs in the same session. Main thread only.
class RunningInstance {
 public:
  virtual ~RunningInstance() = default;
  /// Passes the command on. Blocks until the agent has taken it, for 5 s at most; does not wait until it is
  /// carried out.
  virtual InstanceAnswer pass(InstanceCommand command) = 0;
  /// Makes this process the agent. The handler gets the commands, from the run loop, and returns whether it
  /// takes them. Does not block.
  [[nodiscard]] virtual Registration receive(std::function<bool(InstanceCommand)> handler) = 0;
  /// A fix that is asked for while the result lives is answered with `dropped`. Does not block.
  virtual Registration dropFixes() = 0;
};

/// The service of the installed host.
RunningInstance& runningInstance();

}  // namespace lexwend::platform
