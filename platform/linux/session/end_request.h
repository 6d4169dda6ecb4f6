// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>

/// The wish of a user or a session that this program ends, told by a signal. What waits on the main thread
/// looks here, because the event loop does not run meanwhile. Any thread.
namespace lexwend::platform::end_request {

/// How long the waits of the main thread may go on after the first signal, all together. An application that
/// is well answers in this time what it was asked last.
inline constexpr std::chrono::milliseconds kGrace{400};

/// Catches SIGTERM, SIGINT and SIGHUP from now on, except those that the process ignores, as nohup leaves
/// SIGHUP to the programs that it starts. Later calls do nothing.
void catchSignals();
/// Becomes readable with the first signal and stays so. -1 before catchSignals().
int descriptor();
/// When a wait ends that would end at `wanted`: earlier after a signal.
std::chrono::steady_clock::time_point limited(std::chrono::steady_clock::time_point wanted);
/// Blocks for that time. A signal cuts it short to what is left of the grace.
void sleep(std::chrono::microseconds duration);

}  // namespace lexwend::platform::end_request
