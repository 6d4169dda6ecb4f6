// SPDX-License-Identifier: MIT
// For builds without Highway: everything is converted the plain way.
#include "core/simd/block_converter.h"

namespace lexwend::simd {

BlockProgress convertBlocks(const ByteTable& /*table*/, Words /*words*/, std::string_view /*text*/,
                            char* /*output*/, std::size_t /*room*/) {
  return {};
}

std::size_t skipToLatin(std::string_view /*text*/, std::size_t from) {
  return from;
}

std::vector<std::string_view> vectorKinds() {
  return {"none"};
}

bool useVectors(std::string_view name) {
  return name == "none";
}

}  // namespace lexwend::simd
