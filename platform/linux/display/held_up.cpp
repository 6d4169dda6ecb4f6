// SPDX-License-Identifier: MIT
#include "platform/linux/display/held_up.h"

#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

namespace lexwend::platform {

bool isHeldUp(std::optional<std::uint32_t> process) {
  if (!process) return false;
  std::ifstream file("/proc/" + std::to_string(*process) + "/stat");
  const std::string status{std::istreambuf_iterator<char>(file), {}};
  // The program's name stands in parentheses before the state and may hold both of them.
  constexpr std::string_view kBeforeState = ") ";
  const std::size_t end = status.rfind(kBeforeState);
  if (end == std::string::npos) return false;
  constexpr std::string_view kHeldUp = "RDTt";
  const std::size_t state = end + kBeforeState.size();
  return state < status.size() && kHeldUp.find(status[state]) != std::string_view::npos;
}

}  // namespace lexwend::platform
