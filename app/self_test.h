// SPDX-License-Identifier: MIT
#pragma once

#include <iosfwd>

#include "core/layout_map.h"

/// A report in plain text of the whole conversion chain as it works on this machine: both maps, a round-trip
/// check and ten sample conversions. Writes no log, needs no permission and no event loop. UTF-8, each line
/// ended by a line feed. Main thread only.
namespace lexwend::SelfTest {

/// Reports on the map of the enabled layouts.
void run(std::ostream& out);

/// Reports on a given map. A value that is not exactly one character and stands under a key that is not upper
/// case is fatal.
void report(std::ostream& out, const LayoutMap& map);

}  // namespace lexwend::SelfTest
