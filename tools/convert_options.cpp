// SPDX-License-Identifier: MIT
#include "tools/convert_options.h"

#include <algorithm>
#include <cstddef>
#include <optional>

namespace lexwend {
namespace {

// Walks the arguments and hands out the values of options.
class Arguments {
 public:
  explicit Arguments(const std::vector<std::string>& arguments) : arguments_(arguments) {}

  bool atEnd() const { return next_ == arguments_.size(); }
  const std::string& take() { return arguments_[next_++]; }

 private:
  const std::vector<std::string>& arguments_;
  std::size_t next_ = 0;
};

struct Option {
  std::string name;                  // with its hyphens
  std::optional<std::string> value;  // what stood behind "="
};

Option split(const std::string& argument) {
  const std::size_t equals = argument.find('=');
  if (equals == std::string::npos) {
    return {argument, std::nullopt};
  }
  return {argument.substr(0, equals), argument.substr(equals + 1)};
}

// Applies an option; the reason when it cannot be followed.
std::optional<ConvertUsageError> apply(const Option& option, Arguments& rest, ConvertOptions& options) {
  if (option.name == "--layout" || option.name == "--map") {
    if (!option.value && rest.atEnd()) {
      return ConvertUsageError{"option " + option.name + " needs a value"};
    }
    const std::string value = option.value ? *option.value : rest.take();
    if (option.name == "--layout" && (value == "en" || value == "he")) {
      options.currentLayoutIsHebrew = value == "he";
    } else if (option.name == "--map" && (value == "builtin" || value == "system")) {
      options.map = value == "system" ? ConvertOptions::Map::system : ConvertOptions::Map::builtIn;
    } else {
      return ConvertUsageError{"\"" + value + "\" is no value for " + option.name};
    }
    return std::nullopt;
  }
  if (option.name != "--lines" && option.name != "--null" && option.name != "--report") {
    return ConvertUsageError{"unknown option " + option.name};
  }
  if (option.value) {
    return ConvertUsageError{"option " + option.name + " takes no value"};
  }
  if (option.name == "--report") {
    options.report = true;
    return std::nullopt;
  }
  const auto asked =
      option.name == "--lines" ? ConvertOptions::Records::lines : ConvertOptions::Records::nulSeparated;
  if (options.records != ConvertOptions::Records::wholeInput && options.records != asked) {
    return ConvertUsageError{"--lines and --null exclude each other"};
  }
  options.records = asked;
  return std::nullopt;
}

}  // namespace

std::variant<ConvertOptions, ConvertNotice, ConvertUsageError> parseConvertArguments(
    const std::vector<std::string>& arguments) {
  const auto optionsEnd = std::find(arguments.begin(), arguments.end(), "--");
  for (const char* help : {"-h", "--help"}) {
    if (std::find(arguments.begin(), optionsEnd, help) != optionsEnd) return ConvertNotice::help;
  }
  if (std::find(arguments.begin(), optionsEnd, "--version") != optionsEnd) return ConvertNotice::version;
  ConvertOptions options;
  bool optionsMayFollow = true;
  for (Arguments rest(arguments); !rest.atEnd();) {
    const std::string& argument = rest.take();
    if (optionsMayFollow && argument == "--") {
      optionsMayFollow = false;
    } else if (optionsMayFollow && argument.size() > 1 && argument[0] == '-') {
      if (auto error = apply(split(argument), rest, options)) return *error;
    } else {
      options.files.push_back(argument);
    }
  }
  return options;
}

const char* convertUsage() {
  return "usage: lexwend-convert [OPTION...] [FILE...]\n"
         "Converts text that was typed in the wrong keyboard layout, Hebrew or English, from the files\n"
         "(or standard input) to standard output.\n"
         "  --layout en|he        the layout that was active; decides where a text mixes both (default en)\n"
         "  --map builtin|system  the built-in table (default), or the layouts enabled on this system\n"
         "  --lines               convert each line by itself, as it arrives\n"
         "  --null                convert each NUL-separated record by itself\n"
         "  --report              one line per text on standard error, for example: target=he changed=true\n"
         "  -h, --help, --version print this, or the version\n"
         "Examples:\n"
         "  echo akuo | lexwend-convert\n"
         "  lexwend-convert --lines letter.txt > mended.txt\n"
         "It reads no settings and writes no log. For the agent's keys and files: lexwend --help\n"
         "Exit status: 0, 1 when reading or writing fails or no layouts are found, 2 for wrong arguments.\n";
}

}  // namespace lexwend
