// SPDX-License-Identifier: MIT
#include "text/clipboard_path.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <utility>

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

// What the user may still hold from the hot key: Shift, Control, Option, Command and the secondary Fn flag.
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

// Waited times are seconds in double precision, summed up step by step and held against the limit by a strict
// less-than: that decides how many polls there are (50 and 30) and which milliseconds are logged (199 after
// ten polls, not 200).
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

/// Presses and releases Command with a key; nothing at all when one of the two events cannot be made.
void postCommandKey(platform::KeyCode keyCode) {
  platform::KeyEvents& events = platform::keyEvents();
  const auto source = events.createSource(platform::EventSourceState::hidSystem);
  const auto down = events.createKeyboardEvent(source, keyCode, /*keyDown=*/true);
  const auto up = events.createKeyboardEvent(source, keyCode, /*keyDown=*/false);
  if (down == nullptr || up == nullptr) return;
  down->setFlags(platform::kEventFlagCommand);
  up->setFlags(platform::kEventFlagCommand);
  events.post(platform::EventTap::hid, *down);
  events.post(platform::EventTap::hid, *up);
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

/// The user's selection by a simulated copy, or nothing after two attempts.
std::optional<Copy> copySelection(Pasteboard& pasteboard) {
  for (int attempt = 1; attempt <= kCopyAttempts; ++attempt) {
    const std::int64_t count = pasteboard.changeCount();
    postCommandKey(platform::kKeyC);
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

void pasteReplacement(Pasteboard& pasteboard, std::string_view replacement) {
  pasteboard.clearContents();
  pasteboard.setString(replacement);
  platform::runLoop().sleep(kPauseBeforePaste);
  postCommandKey(platform::kKeyV);
  Log::write("clipboard: pasted " + std::to_string(characterCount(replacement)) + " chars");
}

}  // namespace

void replaceViaClipboard(const Transform& transform) {
  const platform::PasteboardRef pasteboard = platform::generalPasteboard();
  const auto snapshot = std::make_shared<const PasteboardSnapshot>(*pasteboard);
  const std::int64_t startingCount = pasteboard->changeCount();

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

  pasteReplacement(*pasteboard, *replacement);
  platform::runLoop().dispatchAfter(kRestoreDelay,
                                    [pasteboard, snapshot] { snapshot->restoreTo(*pasteboard); });
}

}  // namespace lexwend::TextAccess
