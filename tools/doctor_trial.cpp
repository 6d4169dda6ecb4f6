// SPDX-License-Identifier: MIT
#include "tools/doctor_trial.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <functional>
#include <optional>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "core/converter.h"
#include "input/input_sources.h"
#include "platform/accessibility.h"
#include "platform/host.h"
#include "text/accessibility_path.h"
#include "text/clipboard_path.h"

namespace lexwend {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr std::string_view kSample = "akuo nv akunl";
constexpr std::string_view kReady = "ready";
constexpr milliseconds kField(10000);    // for a window to come up on a slow machine
constexpr milliseconds kFix(7000);       // as long as a fix may take on a slow machine
constexpr milliseconds kRestored(1500);  // the clipboard comes back half a second after a paste
constexpr milliseconds kStep(5);
constexpr milliseconds kTryAgain(250);

/// The process that shows the field.
class Field {
 public:
  Field() {
    std::array<int, 2> in{};
    std::array<int, 2> out{};
    if (pipe(in.data()) != 0) return;
    if (pipe(out.data()) != 0) return;
    for (const int end : {in[1], out[0]}) fcntl(end, F_SETFD, FD_CLOEXEC);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
    std::string name = "lexwend-doctor";
    std::string option = "--field";
    std::array<char*, 3> arguments{name.data(), option.data(), nullptr};
    const int failure =
        posix_spawn(&process_, "/proc/self/exe", &actions, nullptr, arguments.data(), environ);
    if (failure != 0) process_ = -1;
    posix_spawn_file_actions_destroy(&actions);
    close(in[0]);
    close(out[1]);
    input_ = in[1];
    output_ = out[0];
    fcntl(output_, F_SETFL, O_NONBLOCK);
  }
  ~Field() {
    if (input_ >= 0) close(input_);
    if (process_ > 0) {
      while (waitpid(process_, nullptr, 0) < 0 && errno == EINTR) {
      }
    }
    if (output_ >= 0) close(output_);
  }
  Field(const Field&) = delete;
  Field& operator=(const Field&) = delete;

  /// Waits until its last line is this one; how long that took, or nothing.
  std::optional<milliseconds> says(std::string_view line, milliseconds limit) {
    const auto start = steady_clock::now();
    while (true) {
      read();
      const auto took = std::chrono::duration_cast<milliseconds>(steady_clock::now() - start);
      if (last_ == line) return took;
      if (took > limit) return std::nullopt;
      platform::diagnosis().waitFor(kStep);
    }
  }

 private:
  void read() {
    std::array<char, 512> bytes{};
    while (true) {
      const auto count = ::read(output_, bytes.data(), bytes.size());
      if (count <= 0) return;
      for (const char byte : std::string_view(bytes.data(), static_cast<std::size_t>(count))) {
        if (byte == '\n') {
          last_ = std::exchange(unfinished_, {});
        } else {
          unfinished_ += byte;
        }
      }
    }
  }

  pid_t process_ = -1;
  int input_ = -1;
  int output_ = -1;
  std::string unfinished_;
  std::string last_;
};

/// One path in a fresh field.
TrialStep tryPath(std::string name, const std::function<bool(const TextAccess::Transform&)>& path) {
  TrialStep step{std::move(name), false, {}, {}};
  Field field;
  if (!field.says(kReady, kField)) {
    step.said = {"the field did not get the keyboard", "השדה לא קיבל את המקלדת"};
    return step;
  }
  const LayoutMap map = LayoutMap::build(InputSources::keyTables());
  const Converter converter(map);
  const std::string expected = converter.convert(kSample, /*currentLayoutIsHebrew=*/false).text;
  const TextAccess::Transform transform = [&](std::string_view text) -> std::optional<std::string> {
    return converter.convert(text, false).text;
  };
  const auto begun = steady_clock::now();
  try {
    // A field that has just appeared may be known a moment later.
    auto start = steady_clock::now();
    while (!path(transform)) {
      if (steady_clock::now() - begun > kFix) {
        step.said = {"the field cannot be read or written this way",
                     "אי אפשר לקרוא את השדה ולכתוב בו בדרך הזאת"};
        return step;
      }
      platform::diagnosis().waitFor(kTryAgain);
      start = steady_clock::now();
    }
    step.done = field.says(expected, kFix).has_value();
    step.took = std::chrono::duration_cast<milliseconds>(steady_clock::now() - start);
  } catch (const TextAccess::Error& error) {
    const std::string reason = TextAccess::caseName(error.failure());
    step.said = {"refused: " + reason, "נדחה: " + reason};
    return step;
  }
  step.said = step.done ? platform::Sentence{"the text was fixed", "הטקסט תוקן"}
                        : platform::Sentence{"the text did not change as expected", "הטקסט לא השתנה כמצופה"};
  return step;
}

}  // namespace

std::vector<TrialStep> tryFixes() {
  std::vector<TrialStep> steps;
  if (!platform::accessibility().isProcessTrusted()) {
    steps.push_back(
        {"permission",
         false,
         {},
         {"this display lets no program type for another", "התצוגה הזאת לא מרשה לתוכנה להקליד בשביל אחרת"}});
    return steps;
  }
  steps.push_back(tryPath("accessibility", TextAccess::replaceViaAccessibility));
  steps.push_back(tryPath("clipboard", [](const TextAccess::Transform& transform) {
    TextAccess::replaceViaClipboard(transform);
    return true;
  }));
  platform::diagnosis().waitFor(kRestored);
  return steps;
}

bool showTrialField() {
  const auto print = [](std::string_view line) {
    std::fwrite(line.data(), 1, line.size(), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
  };
  return platform::diagnosis().runTrialField(
      kSample, [&] { print(kReady); }, print);
}

}  // namespace lexwend
