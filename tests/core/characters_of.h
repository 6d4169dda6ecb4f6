// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "core/characters.h"

namespace lexwend {

inline std::vector<std::string> charactersOf(std::string_view text) {
  std::vector<std::string> characters;
  for (CharacterReader reader(text); !reader.atEnd();) characters.emplace_back(reader.next());
  return characters;
}

}  // namespace lexwend
