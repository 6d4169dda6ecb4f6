// SPDX-License-Identifier: MIT
// Two texts, separated by a NUL, are compared by the program and by a plain reference.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "core/characters.h"
#include "tests/core/reference_converter.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  const std::size_t parting = input.find('\0');
  const std::string_view left = input.substr(0, parting);
  const std::string_view right = parting == std::string_view::npos ? "" : input.substr(parting + 1);
  if (lexwend::canonicallyEquivalent(left, right) != lexwend::reference::canonicallyEquivalent(left, right)) {
    std::abort();
  }
  return 0;
}
