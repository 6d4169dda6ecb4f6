// SPDX-License-Identifier: MIT
// Command lines of both programs: arguments that are separated by NUL. One that cannot be followed gets one
// sentence; one that can names no more files than arguments; a notice says something.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <variant>
#include <vector>

#include "app/entry.h"
#include "tools/convert_options.h"

namespace {

void require(bool truth) {
  if (!truth) std::abort();
}

std::vector<std::string> argumentsIn(const std::string& bytes) {
  std::vector<std::string> arguments(1);
  for (const char c : bytes) {
    if (c == '\0') {
      arguments.emplace_back();
    } else {
      arguments.back() += c;
    }
  }
  return arguments;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace lexwend;
  const std::vector<std::string> arguments =
      argumentsIn(std::string(reinterpret_cast<const char*>(data), size));
  const auto parsed = parseConvertArguments(arguments);
  if (const auto* error = std::get_if<ConvertUsageError>(&parsed)) {
    require(!error->message.empty());
  } else if (const auto* options = std::get_if<ConvertOptions>(&parsed)) {
    require(options->files.size() <= arguments.size());
  }
  std::vector<std::string> ofTheAgent{"lexwend"};
  ofTheAgent.insert(ofTheAgent.end(), arguments.begin(), arguments.end());
  std::ostringstream said;
  require(printNotice(ofTheAgent, said) == !said.str().empty());
  return 0;
}
