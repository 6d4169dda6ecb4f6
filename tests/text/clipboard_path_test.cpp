// SPDX-License-Identifier: MIT
#include "text/clipboard_path.h"

#include <map>

#include <gtest/gtest.h>

#include "tests/text/text_fixture.h"

namespace lexwend {
namespace {

using namespace std::chrono_literals;
using platform::FakeCopy;
using platform::FakePasteboardEntry;
using TextAccess::Failure;
using Contents = std::vector<platform::FakePasteboardItemContents>;

struct ClipboardPath : TextFixture {
  const Contents users = {
      {FakePasteboardEntry::text("the user's own"), FakePasteboardEntry::data("public.html", "<i>")},
      {FakePasteboardEntry::data("public.png", "\x89PNG")}};

  ClipboardPath() { host.pasteboard().otherAppWrites(users); }

  std::optional<Failure> run() {
    return failureOf([&] { TextAccess::replaceViaClipboard(capitals); });
  }
  void expectTheCopyOnlyAfterTheWait() {
    const auto lastPoll = host.calls().lastIndexOf("runLoop.sleep 10000us");
    const auto copy = host.calls().indexOf("keyEvents.post 8 down");
    ASSERT_TRUE(lastPoll && copy);
    EXPECT_LT(*lastPoll, *copy);
  }
  void copiesAfter(std::chrono::milliseconds delay) { editor->copies = {FakeCopy::Kind::selection, delay}; }
};

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

TEST_F(ClipboardPath, contentsThatTheSystemRefusesToShowStayAsTheyAre) {
  const Contents refused = {{FakePasteboardEntry::brokenPromise("public.png")}};
  host.pasteboard().otherAppWrites(refused);
  host.pasteboard().mayRefuseReading(true);
  EXPECT_EQ(run(), Failure::noSelection);
  EXPECT_EQ(log(), (Lines{"clipboard: the system refuses to let the clipboard be read"}));
  EXPECT_EQ(host.pasteboard().contents(), refused);
  EXPECT_TRUE(host.keyEvents().posted().empty());
}

TEST_F(ClipboardPath, goesOnWhereTheSystemMightHaveRefusedAndDidNot) {
  host.pasteboard().mayRefuseReading(true);
  EXPECT_EQ(run(), std::nullopt);
  host.advance(500ms);
  EXPECT_EQ(host.pasteboard().contents(), users);
  host.pasteboard().otherAppClears();
  openFreshField();
  EXPECT_EQ(run(), std::nullopt) << "an empty one gives nothing to refuse";
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

TEST_F(ClipboardPath, textlessFirstCopyDoesNotStopTheSecond) {
  editor->nextCopies = {{FakeCopy::Kind::image, 20ms}};
  EXPECT_EQ(run(), std::nullopt);
  EXPECT_EQ(log().front(), "clipboard: copy produced nothing (attempt 1, changed=true, waited=20ms)");
  host.advance(500ms);
  EXPECT_EQ(host.pasteboard().contents(), users);
}

TEST_F(ClipboardPath, endsAtOnceWhereTheHostRefusesTheCopy) {
  host.keyEvents().refuse(platform::kKeyC);
  host.keyEvents().holdModifiers(platform::kEventFlagShift);
  host.keyEvents().releaseModifiersAfter(10ms);
  host.clock().systemDoes(5ms, [this] { host.pasteboard().otherAppCopies("meanwhile"); });
  EXPECT_EQ(run(), Failure::noSelection);
  EXPECT_EQ(host.clock().now(), 10ms) << "nothing is waited for";
  EXPECT_EQ(log(), Lines{"clipboard: copy refused"});
  EXPECT_TRUE(host.keyEvents().posted().empty());
  EXPECT_EQ(host.pasteboard().plainText(), "meanwhile") << "nobody was made to copy it";
  EXPECT_TRUE(seen.empty());
}

TEST_F(ClipboardPath, givesBackWhatTheFirstCopyChangedWhereTheSecondIsRefused) {
  editor->copies = {FakeCopy::Kind::image, 20ms};
  host.clock().systemDoes(10ms, [this] { host.keyEvents().refuse(platform::kKeyC); });
  EXPECT_EQ(run(), Failure::noSelection);
  EXPECT_EQ(log(), (Lines{"clipboard: copy produced nothing (attempt 1, changed=true, waited=20ms)",
                          "clipboard: copy refused"}));
  EXPECT_EQ(host.pasteboard().contents(), users);
}

TEST_F(ClipboardPath, givesTheClipboardBackAtOnceWhereThePasteIsRefused) {
  host.keyEvents().refuse(platform::kKeyV);
  EXPECT_EQ(run(), Failure::noSelection);
  EXPECT_EQ(log().back(), "clipboard: paste refused");
  EXPECT_EQ(field->text(), "akuo");
  EXPECT_EQ(host.keyEvents().posted().size(), 2u) << "the copy alone";
  EXPECT_EQ(host.pasteboard().contents(), users);
  EXPECT_EQ(host.runLoop().pendingWork(), 0u);
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

}  // namespace
}  // namespace lexwend
