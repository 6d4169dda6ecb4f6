// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "core/converter.h"

namespace lexwend::reference {

/// The conversion once more, as plainly as it can be said and with no regard for speed: ICU's break iterator
/// finds the characters, ICU's normaliser compares, nothing is shared with the code under test but the type
/// of the map. What the two disagree on is a mistake in one of them.
std::vector<std::string> characters(std::string_view text);

bool canonicallyEquivalent(std::string_view left, std::string_view right);

Converter::Result convert(const LayoutMap& map, std::string_view text, bool currentLayoutIsHebrew);

}  // namespace lexwend::reference
