// SPDX-License-Identifier: MIT
#pragma once

#include <iosfwd>

#include "core/layout_map.h"

/// A report in plain text on the whole conversion chain of this machine: both maps, a round-trip check and
/// ten sample conversions. Writes no log; needs no permission and no event loop. The report is UTF-8, and
/// each line ends with a line feed. Main thread only.
namespace lexwend::SelfTest {

/// Reports on the map of the enabled layouts.
void run(std::ostream& out);

/// Reports on a given map. Fatal when a value under a key that is not upper case is not exactly one
/// character.
void report(std::ostream& out, const LayoutMap& map);

}  // namespace lexwend::SelfTest
