// SPDX-License-Identifier: MIT
#include "tools/system_layout_map.h"

#include <memory>
#include <utility>

#include "input/input_sources.h"
#include "platform/host.h"

namespace lexwend {

std::optional<LayoutMap> systemLayoutMap() {
  const std::unique_ptr<platform::Host> host = platform::makeHost();
  const platform::HostScope scope(*host);
  LayoutMap map = LayoutMap::build(InputSources::keyTables());
  return map.builtFromSystem ? std::optional(std::move(map)) : std::nullopt;
}

}  // namespace lexwend
