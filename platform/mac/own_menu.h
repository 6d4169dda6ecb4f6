// SPDX-License-Identifier: MIT
#pragma once

namespace lexwend::platform::mac {

/// Whether the agent's own menu was open at that moment, in seconds since the system started, the clock of
/// the system's events. Main thread only. Defined in status_item.mm.
bool wasOwnMenuOpenAt(double secondsSinceStartup);

}  // namespace lexwend::platform::mac
