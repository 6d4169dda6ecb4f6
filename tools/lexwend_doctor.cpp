// SPDX-License-Identifier: MIT
// lexwend-doctor: tells a person why a fix does not work here, and what to do about it.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <unistd.h>

#include "platform/host.h"
#include "tools/doctor_checks.h"
#include "tools/doctor_report.h"
#include "tools/doctor_trial.h"

namespace lexwend {
namespace {

constexpr int kAllWell = 0;
constexpr int kFindings = 1;
constexpr int kWrongArguments = 2;

constexpr const char* kUsage =
    "usage: lexwend-doctor [--try] [--after SECONDS] [--json]\n"
    "Tells why a fix does not work here, and what to do about it. Reads and shows nothing of your text.\n"
    "  --try            also opens a field of its own, fixes a text in it by each path, and times it\n"
    "  --after SECONDS  looks after so many seconds; meanwhile click into the window where a fix fails\n"
    "  --json           the same for tools, in English\n"
    "  -h, --help       print this\n"
    "  --version        print the version\n"
    "Examples:\n"
    "  lexwend-doctor\n"
    "  lexwend-doctor --after 5\n"
    "  lexwend-doctor --json | python3 -m json.tool\n"
    "Files, which it only reads (--try writes to the log): ~/Library/Logs/Lexwend.log,\n"
    "  ~/.config/lexwend/settings, ~/.config/autostart/org.lexwend.Lexwend.desktop\n"
    "It speaks Hebrew where the locale is Hebrew.\n"
    "Exit status: 0 all is well, 1 findings, 2 wrong arguments.\n";

struct Options {
  bool tries = false;
  bool json = false;
  std::optional<unsigned> after;
};

std::optional<Options> parsed(const std::vector<std::string_view>& arguments) {
  Options options;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    if (arguments[i] == "--try") {
      options.tries = true;
    } else if (arguments[i] == "--json") {
      options.json = true;
    } else if (arguments[i] == "--after" && i + 1 < arguments.size()) {
      const std::string seconds(arguments[++i]);
      if (seconds.empty() || seconds.size() > 3 ||
          seconds.find_first_not_of("0123456789") != std::string::npos) {
        return std::nullopt;
      }
      options.after = static_cast<unsigned>(std::stoul(seconds));
    } else {
      return std::nullopt;
    }
  }
  return options;
}

/// POSIX: the first of these that is set says the language of messages.
bool localeIsHebrew() {
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char* value = std::getenv(name);
    if (value == nullptr || *value == '\0') continue;
    const std::string_view language = std::string_view(value).substr(0, 2);
    return language == "he" || language == "iw";
  }
  return false;
}

int run(const Options& options) {
  const auto host = platform::makeHost();
  const platform::HostScope scope(*host);
  if (options.after) {
    std::fprintf(stderr,
                 localeIsHebrew() ? "עוד %u שניות: ללחוץ עכשיו בחלון שבו התיקון לא מצליח\n"
                                  : "in %u seconds: click into the window where a fix fails\n",
                 *options.after);
    sleep(*options.after);
  }
  DoctorReport report{examine({.focusIsMeant = options.after.has_value()}), {}};
  if (options.tries) report.trial = tryFixes();
  const char* const noColour = std::getenv("NO_COLOR");
  const bool colour = isatty(STDOUT_FILENO) != 0 && (noColour == nullptr || *noColour == '\0');
  const std::string text = options.json ? asJson(report, LEXWEND_VERSION)
                                        : asText(report, LEXWEND_VERSION, {localeIsHebrew(), colour});
  std::fputs(text.c_str(), stdout);
  return allIsWell(report) ? kAllWell : kFindings;
}

}  // namespace
}  // namespace lexwend

int main(int argc, char** argv) {
  using namespace lexwend;
  const std::vector<std::string_view> arguments(argv + 1, argv + argc);
  const auto has = [&](std::string_view option) {
    return std::find(arguments.begin(), arguments.end(), option) != arguments.end();
  };
  if (has("--help") || has("-h")) {
    std::fputs(kUsage, stdout);
    return kAllWell;
  }
  if (has("--version")) {
    std::puts("lexwend-doctor " LEXWEND_VERSION);
    return kAllWell;
  }
  if (arguments.size() == 1 && arguments[0] == "--field") {
    const auto host = platform::makeHost();
    const platform::HostScope scope(*host);
    return showTrialField() ? kAllWell : kFindings;
  }
  const auto options = parsed(arguments);
  if (!options) {
    std::fputs(kUsage, stderr);
    return kWrongArguments;
  }
  return run(*options);
}
