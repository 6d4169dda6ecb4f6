// SPDX-License-Identifier: MIT
#include "text/clipboard_path.h"

#include <map>

#include <gtest/gtest.h>

#include "tests/text/text_fixture.h"

namespace lexwend {
namespace {

using namespace std::chrono_literals;
using platform::EventSourceState;
using platform::FakeCopy;
using platform::FakeOperation;
using platform::FakePasteboardEntry;
using platform::FakePostedKey;
using TextAccess::Failure;
using Contents = std::vector<platform::FakePasteboardItemContents>;
using Posted = std::vector<FakePostedKey>;

struct ClipboardPath : TextFixture {
  const Contents users = {
      {FakePasteboardEntry::text("the user's own"), FakePasteboardEntry::data("public.html", "<i>")},
      {FakePasteboardEntry::data("public.png", "\x89PNG")}};

  ClipboardPath() { host.pasteboard().otherAppWrites(users); }

  std::optional<Failure> run() {
    return failureOf([&] { TextAccess::replaceViaClipboard(capitals); });
  }
  std::optional<Failure> runWithoutChange() {
    return failureOf([] { TextAccess::replaceViaClipboard([](std::string_view) { return std::nullopt; }); });
  }
  static Posted commandKey(platform::KeyCode keyCode, std::chrono::milliseconds time) {
    return {{keyCode, true, platform::kEventFlagCommand, EventSourceState::hidSystem, platform::EventTap::hid,
             time},
            {keyCode, false, platform::kEventFlagCommand, EventSourceState::hidSystem,
             platform::EventTap::hid, time}};
  }
  void expectTheCopyOnlyAfterTheWait() {
    const auto lastPoll = host.calls().lastIndexOf("runLoop.sleep 10000us");
    const auto copy = host.calls().indexOf("keyEvents.post 8 down");
    ASSERT_TRUE(lastPoll && copy);
    EXPECT_LT(*lastPoll, *copy);
  }
  void copiesAfter(std::chrono::milliseconds delay) { editor->copies = {FakeCopy::Kind::selection, delay}; }
};

TEST_F(ClipboardPath, copiesConvertsPastesAndRestoresHalfASecondLater) {
  EXPECT_EQ(run(), std::nullopt);
  EXPECT_EQ(field->text(), "AKUO");
  EXPECT_EQ(log(), (Lines{"clipboard: copied 4 chars after 0ms (attempt 1)", "clipboard: pasted 4 chars"}));
  EXPECT_EQ(host.clock().now(), 30ms) << "the pause before the paste";
  EXPECT_EQ(host.pasteboard().plainText(), "AKUO");
  host.advance(499ms);
  EXPECT_EQ(host.pasteboard().plainText(), "AKUO");
  host.advance(1ms);
  EXPECT_EQ(host.pasteboard().contents(), users);
}

TEST_F(ClipboardPath, pressesExactlyCommandCAndCommandV) {
  EXPECT_EQ(run(), std::nullopt);
  Posted expected = commandKey(platform::kKeyC, 0ms);
  const Posted paste = commandKey(platform::kKeyV, 30ms);
  expected.insert(expected.end(), paste.begin(), paste.end());
  EXPECT_EQ(host.keyEvents().posted(), expected);
}

TEST_F(ClipboardPath, emptyPasteboardIsEmptyAgainAfterwards) {
  host.pasteboard().otherAppClears();
  EXPECT_EQ(run(), std::nullopt);
  host.advance(500ms);
  EXPECT_EQ(host.pasteboard().contents(), Contents{});
}

TEST_F(ClipboardPath, waitedMillisecondsFollowTheSumOfTheSteps) {
  // Ten to fourteen steps of 0.02 sum up to a little less than they should, every other number does not.
  for (int polls = 1; polls <= 29; ++polls) {
    field->setText("akuo");
    field->selectAll();
    copiesAfter(std::chrono::milliseconds(20 * polls));
    EXPECT_EQ(run(), std::nullopt);
    const int expected = polls >= 10 && polls <= 14 ? 20 * polls - 1 : 20 * polls;
    const Lines lines = log();
    EXPECT_EQ(lines[lines.size() - 2],
              "clipboard: copied 4 chars after " + std::to_string(expected) + "ms (attempt 1)");
    host.advance(1s);
  }
}

TEST_F(ClipboardPath, copyThatComesWithTheLastPollStillCounts) {
  copiesAfter(600ms);
  EXPECT_EQ(run(), std::nullopt);
  EXPECT_EQ(log().front(), "clipboard: copied 4 chars after 600ms (attempt 1)");
}

TEST_F(ClipboardPath, copyOfTheFirstAttemptThatComesTooLateIsSeenByNobody) {
  // It arrives in the pause: the second attempt counts from there and makes a copy of its own.
  editor->nextCopies = {{FakeCopy::Kind::selection, 700ms}};
  EXPECT_EQ(run(), std::nullopt);
  EXPECT_EQ(log(), (Lines{"clipboard: copy produced nothing (attempt 1, changed=false, waited=600ms)",
                          "clipboard: copied 4 chars after 0ms (attempt 2)", "clipboard: pasted 4 chars"}));
}

TEST_F(ClipboardPath, secondAttemptMaySucceed) {
  editor->nextCopies = {{FakeCopy::Kind::nothing, 0ms}};
  copiesAfter(40ms);
  EXPECT_EQ(run(), std::nullopt);
  EXPECT_EQ(log(), (Lines{"clipboard: copy produced nothing (attempt 1, changed=false, waited=600ms)",
                          "clipboard: copied 4 chars after 40ms (attempt 2)", "clipboard: pasted 4 chars"}));
  EXPECT_EQ(host.clock().now(), 600ms + 150ms + 40ms + 30ms);
}

TEST_F(ClipboardPath, noSelectionLeavesAnUnchangedPasteboardUntouched) {
  field->selectNothing();
  EXPECT_EQ(run(), Failure::noSelection);
  EXPECT_EQ(log(), (Lines{"clipboard: copy produced nothing (attempt 1, changed=false, waited=600ms)",
                          "clipboard: copy produced nothing (attempt 2, changed=false, waited=600ms)"}));
  EXPECT_EQ(host.calls().count("pasteboard.clearContents"), 0u);
  EXPECT_EQ(host.pasteboard().contents(), users);
  EXPECT_EQ(host.clock().now(), 2 * (600ms + 150ms));
  EXPECT_EQ(host.keyEvents().posted().size(), 4u);
  EXPECT_TRUE(seen.empty());
}

TEST_F(ClipboardPath, changeWhileTheModifiersAreWaitedForIsTakenBackAfterTwoEmptyCopies) {
  host.keyEvents().holdModifiers(platform::kEventFlagControl);
  host.keyEvents().releaseModifiersAfter(100ms);
  host.clock().systemDoes(50ms, [this] { host.pasteboard().otherAppCopies("meanwhile"); });
  field->selectNothing();
  EXPECT_EQ(run(), Failure::noSelection);
  EXPECT_EQ(log().back(), "clipboard: copy produced nothing (attempt 2, changed=false, waited=600ms)");
  EXPECT_EQ(host.pasteboard().contents(), users);
}

TEST_F(ClipboardPath, copyThatComesInTheLastPauseIsTakenBack) {
  editor->nextCopies = {{FakeCopy::Kind::nothing, 0ms}, {FakeCopy::Kind::selection, 700ms}};
  EXPECT_EQ(run(), Failure::noSelection);
  EXPECT_EQ(log().back(), "clipboard: copy produced nothing (attempt 2, changed=false, waited=600ms)");
  EXPECT_EQ(host.pasteboard().contents(), users);
}

TEST_F(ClipboardPath, copyWithoutTextCountsAsNothingAndIsTakenBackAtOnce) {
  for (const auto kind : {FakeCopy::Kind::emptyText, FakeCopy::Kind::image, FakeCopy::Kind::clears}) {
    editor->copies = {kind, 0ms};
    EXPECT_EQ(run(), Failure::noSelection);
    const Lines lines = log();
    EXPECT_EQ(lines[lines.size() - 2],
              "clipboard: copy produced nothing (attempt 1, changed=true, waited=0ms)");
    EXPECT_EQ(lines.back(), "clipboard: copy produced nothing (attempt 2, changed=true, waited=0ms)");
    EXPECT_EQ(host.pasteboard().contents(), users);
  }
}

TEST_F(ClipboardPath, textlessFirstCopyDoesNotStopTheSecond) {
  editor->nextCopies = {{FakeCopy::Kind::image, 20ms}};
  EXPECT_EQ(run(), std::nullopt);
  EXPECT_EQ(log().front(), "clipboard: copy produced nothing (attempt 1, changed=true, waited=20ms)");
  host.advance(500ms);
  EXPECT_EQ(host.pasteboard().contents(), users);
}

TEST_F(ClipboardPath, nothingToChangeRestoresAtOnceAndLogsNoMore) {
  EXPECT_EQ(runWithoutChange(), Failure::nothingToChange);
  EXPECT_EQ(log(), Lines{"clipboard: copied 4 chars after 0ms (attempt 1)"});
  EXPECT_EQ(host.pasteboard().contents(), users);
  EXPECT_EQ(host.runLoop().pendingWork(), 0u);
  EXPECT_EQ(host.keyEvents().posted(), commandKey(platform::kKeyC, 0ms));
}

TEST_F(ClipboardPath, eventThatCannotBeMadePostsNothing) {
  for (const auto operation : {FakeOperation::createKeyDownEvent, FakeOperation::createKeyUpEvent}) {
    host.keyEvents().forgetPosted();
    host.failNext(operation, -1, /*times=*/2);
    EXPECT_EQ(run(), Failure::noSelection);
    EXPECT_TRUE(host.keyEvents().posted().empty());
    EXPECT_EQ(field->text(), "akuo");
    EXPECT_EQ(log().back(), "clipboard: copy produced nothing (attempt 2, changed=false, waited=600ms)");
  }
}

TEST_F(ClipboardPath, eventsAreMadeEvenWithoutASource) {
  host.failNext(FakeOperation::createEventSource);
  EXPECT_EQ(run(), std::nullopt);
  EXPECT_EQ(host.keyEvents().posted().front().source, std::nullopt);
}

TEST_F(ClipboardPath, pasteThatCannotBePostedStillCountsAndIsRestored) {
  editor->copies = {FakeCopy::Kind::selection, 0ms};
  EXPECT_EQ(failureOf([&] {
              TextAccess::replaceViaClipboard([&](std::string_view) {
                host.failNext(FakeOperation::createKeyUpEvent);
                return std::optional<std::string>("x");
              });
            }),
            std::nullopt);
  EXPECT_EQ(log().back(), "clipboard: pasted 1 chars");
  EXPECT_EQ(field->text(), "akuo");
  host.advance(500ms);
  EXPECT_EQ(host.pasteboard().contents(), users);
}

TEST_F(ClipboardPath, waitsForTheHotKeysModifiersToBeReleased) {
  host.keyEvents().holdModifiers(platform::kEventFlagControl | platform::kEventFlagOption);
  host.keyEvents().releaseModifiersAfter(45ms);
  EXPECT_EQ(run(), std::nullopt);
  EXPECT_EQ(host.clock().now(), 50ms + 30ms);
  expectTheCopyOnlyAfterTheWait();
}

TEST_F(ClipboardPath, modifiersAreThoseOfTheSessionAsAWhole) {
  host.keyEvents().holdModifiers(platform::kEventFlagCommand);
  host.keyEvents().releaseModifiersAfter(20ms);
  EXPECT_EQ(run(), std::nullopt);
  EXPECT_EQ(host.calls().of("keyEvents.flagsState"), Lines(3, "keyEvents.flagsState 0"));
}

TEST_F(ClipboardPath, goesOnAfterHalfASecondWithModifiersStillHeld) {
  for (const std::uint64_t flag : {0x20000U, 0x40000U, 0x80000U, 0x100000U, 0x800000U}) {
    field->setText("akuo");
    field->selectAll();
    host.keyEvents().holdModifiers(platform::EventFlags{flag});
    host.calls().clear();
    const auto start = host.clock().now();
    EXPECT_EQ(run(), std::nullopt);
    EXPECT_EQ(host.clock().now() - start, 500ms + 30ms) << std::hex << flag;
    expectTheCopyOnlyAfterTheWait();
    host.advance(1s);
  }
}

TEST_F(ClipboardPath, capsLockAndOtherFlagsAreNotWaitedFor) {
  host.keyEvents().holdModifiers(platform::EventFlags{0x10000 | 0x200000 | 0x400000});
  EXPECT_EQ(run(), std::nullopt);
  EXPECT_EQ(host.clock().now(), 30ms);
}

TEST_F(ClipboardPath, snapshotIsTakenBeforeTheModifiersAreWaitedFor) {
  host.keyEvents().holdModifiers(platform::kEventFlagShift);
  host.keyEvents().releaseModifiersAfter(10ms);
  EXPECT_EQ(run(), std::nullopt);
  const auto snapshot = host.calls().indexOf("pasteboard.items");
  const auto wait = host.calls().indexOf("runLoop.sleep");
  ASSERT_TRUE(snapshot && wait);
  EXPECT_LT(*snapshot, *wait);
}

TEST_F(ClipboardPath, replacementGoesOnAClearedPasteboardThenComeThePauseAndThePaste) {
  EXPECT_EQ(run(), std::nullopt);
  const auto clear = host.calls().indexOf("pasteboard.clearContents");
  const auto set = host.calls().indexOf("pasteboard.setString");
  const auto pause = host.calls().indexOf("runLoop.sleep 30000us");
  const auto paste = host.calls().indexOf("keyEvents.post 9 down");
  ASSERT_TRUE(clear && set && pause && paste);
  EXPECT_LT(*clear, *set);
  EXPECT_LT(*set, *pause);
  EXPECT_LT(*pause, *paste);
}

TEST_F(ClipboardPath, countsAreOfPerceivedCharacters) {
  field->setText("שָׁ\r\n👨‍👩‍👧");
  field->selectAll();
  EXPECT_EQ(
      failureOf([] {
        TextAccess::replaceViaClipboard([](std::string_view) { return std::optional<std::string>("é́"); });
      }),
      std::nullopt);
  EXPECT_EQ(log(), (Lines{"clipboard: copied 3 chars after 0ms (attempt 1)", "clipboard: pasted 1 chars"}));
}

TEST_F(ClipboardPath, secondRunWithinTheDelayTakesTheReplacementForTheUsersContent) {
  EXPECT_EQ(run(), std::nullopt);
  host.advance(100ms);
  field->selectAll();
  EXPECT_EQ(run(), std::nullopt);
  host.advance(1s);
  EXPECT_EQ(host.pasteboard().plainText(), "AKUO") << "the second run restored what the first had put there";
}

TEST_F(ClipboardPath, leavesExactlyOnePieceOfWorkBehind) {
  EXPECT_EQ(run(), std::nullopt);
  EXPECT_EQ(host.runLoop().pendingWork(), 1u);
  host.advance(500ms);
  EXPECT_EQ(host.runLoop().pendingWork(), 0u);
}

}  // namespace
}  // namespace lexwend
