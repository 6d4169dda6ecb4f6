// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>

namespace lexwend::platform {

/// Whether the main thread of that process computes, waits for a disk or is stopped, rather than waiting for
/// events (the state in /proc/PID/stat, proc(5)): the process may have events to handle still. False for a
/// process that has ended or is not known. Waits for nobody. Any thread.
bool isHeldUp(std::optional<std::uint32_t> process);

}  // namespace lexwend::platform
