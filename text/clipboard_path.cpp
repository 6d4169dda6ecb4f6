// SPDX-License-Identifier: MIT
#include "text/clipboard_path.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "core/characters.h"
#include "platform/key_events.h"
#include "platform/pasteboard.h"
#include "platform/run_loop.h"
#include "support/log.h"
#include "text/pasteboard_snapshot.h"

namespace lexwend::TextAccess {
namespace {

using platform::EventFlags;
using platform::Pasteboard;
using std::chrono::milliseconds;

// The modifiers that the user may still hold from the hot key: Shift, Control, Option, Command and the
// secondary Fn flag.
constexpr EventFlags kHeldModifiersMask = platform::kEventFlagShift | platform::kEventFlagControl |
                                          platform::kEventFlagOption | platform::kEventFlagCommand |
                                          platform::kEventFlagSecondaryFn;
static_assert(number(kHeldModifiersMask) == 0x9E0000);

constexpr milliseconds kModifierPollInterval{10};
constexpr milliseconds kCopyPollInterval{20};
constexpr milliseconds kPauseAfterFailedCopy{150};
constexpr milliseconds kPauseBeforePaste{30};  // lets the front application see the new pasteboard
constexpr milliseconds kRestoreDelay{500};     // lets the front application fetch what it pastes
constexpr int kCopyAttempts = 2;

// Waiting times are seconds in double precision. They are summed up step by step, and the sum is compared to
// the limit by a strict less-than. This fixes the number of polls (50 and 30) and the milliseconds in the log
// (199 after ten polls, not 200).
constexpr double kModifierPollSeconds = 0.01;
constexpr double kModifierLimitSeconds = 0.5;
constexpr double kCopyPollSeconds = 0.02;
constexpr double kCopyLimitSeconds = 0.6;

struct Copy {
  std::string text;
  int milliseconds = 0;
  int attempt = 0;
};

bool modifiersAreHeld() {
  const EventFlags flags = platform::keyEvents().flagsState(platform::EventSourceState::combinedSession);
  return overlap(flags, kHeldModifiersMask);
}

void waitForModifierRelease() {
  if (!modifiersAreHeld()) return;
  double waited = 0;
  do {
    platform::runLoop().sleep(kModifierPollInterval);
    if (!modifiersAreHeld()) return;
    waited += kModifierPollSeconds;
  } while (waited < kModifierLimitSeconds);
}

/// Presses and releases Command with a key; nothing at all when one of the two events cannot be made. False
/// where the host refuses.
bool postCommandKey(platform::KeyCode keyCode) {
  platform::KeyEvents& events = platform::keyEvents();
  const auto source = events.createSource(platform::EventSourceState::hidSystem);
  const auto down = events.createKeyboardEvent(source, keyCode, /*keyDown=*/true);
  const auto up = events.createKeyboardEvent(source, keyCode, /*keyDown=*/false);
  if (down == nullptr || up == nullptr) return true;
  down->setFlags(platform::kEventFlagCommand);
  up->setFlags(platform::kEventFlagCommand);
  if (events.post(platform::EventTap::hid, *down) == platform::PostResult::refused) return false;
  events.post(platform::EventTap::hid, *up);
  return true;
}

/// Seconds until the change count left `count`, or the full wait.
double waitForChange(Pasteboard& pasteboard, std::int64_t count) {
  double waited = 0;
  while (pasteboard.changeCount() == count && waited < kCopyLimitSeconds) {
    platform::runLoop().sleep(kCopyPollInterval);
    waited += kCopyPollSeconds;
  }
  return waited;
}

void logTypesLeftOut(const std::vector<std::string>& types) {
  if (types.empty()) return;
  std::string line = "clipboard: not kept:";
  for (const std::string& type : types) line += " " + type;
  Log::write(line);
}

/// The user's selection by a simulated copy, or nothing after two attempts or a refusal of the second. Throws
/// noSelection where the first is refused: then nobody was made to copy, and the pasteboard is not to be
/// touched.
std::optional<Copy> copySelection(Pasteboard& pasteboard) {
  for (int attempt = 1; attempt <= kCopyAttempts; ++attempt) {
    const std::int64_t count = pasteboard.changeCount();
    if (!postCommandKey(platform::kKeyC)) {
      Log::write("clipboard: copy refused");
      if (attempt == 1) throw Error(Failure::noSelection);
      return std::nullopt;
    }
    const int waited = static_cast<int>(waitForChange(pasteboard, count) * 1000);

    const bool changed = pasteboard.changeCount() != count;
    if (changed) {
      auto text = pasteboard.string();
      if (text && !text->empty()) return Copy{std::move(*text), waited, attempt};
    }
    Log::write("clipboard: copy produced nothing (attempt " + std::to_string(attempt) +
               ", changed=" + (changed ? "true" : "false") + ", waited=" + std::to_string(waited) + "ms)");
    platform::runLoop().sleep(kPauseAfterFailedCopy);
  }
  return std::nullopt;
}

/// False where the host refuses.
bool pasteReplacement(Pasteboard& pasteboard, std::string_view replacement) {
  pasteboard.clearContents();
  pasteboard.setString(replacement);
  platform::runLoop().sleep(kPauseBeforePaste);
  const bool pasted = postCommandKey(platform::kKeyV);
  Log::write(pasted ? "clipboard: pasted " + std::to_string(characterCount(replacement)) + " chars"
                    : "clipboard: paste refused");
  return pasted;
}

}  // namespace

void replaceViaClipboard(const Transform& transform) {
  const platform::PasteboardRef pasteboard = platform::generalPasteboard();
  const auto snapshot = std::make_shared<const PasteboardSnapshot>(*pasteboard);
  // A copy would wipe what cannot be put back.
  if (snapshot->isUnreadable() && pasteboard->mayRefuseReading()) {
    Log::write("clipboard: the system refuses to let the clipboard be read");
    throw Error(Failure::noSelection);
  }
  const std::int64_t startingCount = pasteboard->changeCount();
  logTypesLeftOut(pasteboard->typesLeftOut());

  waitForModifierRelease();

  const std::optional<Copy> copy = copySelection(*pasteboard);
  if (!copy) {
    if (pasteboard->changeCount() != startingCount) snapshot->restoreTo(*pasteboard);
    throw Error(Failure::noSelection);
  }
  Log::write("clipboard: copied " + std::to_string(characterCount(copy->text)) + " chars after " +
             std::to_string(copy->milliseconds) + "ms (attempt " + std::to_string(copy->attempt) + ")");

  const std::optional<std::string> replacement = transform(copy->text);
  if (!replacement) {
    snapshot->restoreTo(*pasteboard);
    throw Error(Failure::nothingToChange);
  }

  if (!pasteReplacement(*pasteboard, *replacement)) {
    snapshot->restoreTo(*pasteboard);
    throw Error(Failure::noSelection);
  }
  platform::runLoop().dispatchAfter(kRestoreDelay,
                                    [pasteboard, snapshot] { snapshot->restoreTo(*pasteboard); });
}

}  // namespace lexwend::TextAccess
