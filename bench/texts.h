// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace lexwend {

/// The kinds of text that are measured.
const std::vector<std::string>& textKinds();

/// A text of a kind, made at random from a fixed seed, of `bytes` bytes or a few more; empty for an unknown
/// kind.
std::string textOf(std::string_view kind, std::size_t bytes);

}  // namespace lexwend
