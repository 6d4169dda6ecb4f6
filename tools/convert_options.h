// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <variant>
#include <vector>

namespace lexwend {

/// What the command line of lexwend-convert asks for.
struct ConvertOptions {
  enum class Map { builtIn, system };
  enum class Records { wholeInput, lines, nulSeparated };

  bool currentLayoutIsHebrew = false;
  Map map = Map::builtIn;
  Records records = Records::wholeInput;
  bool report = false;
  std::vector<std::string> files;  ///< In order; "-" is standard input. Empty: standard input alone.
};

/// `--help` and `--version` take precedence over every other argument.
enum class ConvertNotice { help, version };

/// Why a command line cannot be followed: one English sentence without a full stop.
struct ConvertUsageError {
  std::string message;
};

/// Reads the arguments after the program's name. Options may stand among the files. An option takes its value
/// from the next argument or from behind "=". When an option is given twice, the last one counts. "--" ends
/// the options.
std::variant<ConvertOptions, ConvertNotice, ConvertUsageError> parseConvertArguments(
    const std::vector<std::string>& arguments);

/// The synopsis and the options, several lines.
const char* convertUsage();

}  // namespace lexwend
