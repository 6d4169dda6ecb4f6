// SPDX-License-Identifier: MIT
#include "platform/linux/clipboard/pasteboard.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <fstream>
#include <future>

#include <dlfcn.h>
#include <glib.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/linux/testing/bytes.h"
#include "tests/linux/testing/child_process.h"
#include "tests/linux/testing/other_application.h"
#include "tests/linux/testing/temporary_folder.h"
#include "tests/linux/testing/virtual_display.h"

namespace {

std::atomic<int> namesAskedFor = 0;

}  // namespace

/// Instead of the library's, which it calls: how many names were asked for tells what a list costs, whatever
/// the machine's load.
extern "C" xcb_get_atom_name_cookie_t xcb_get_atom_name(xcb_connection_t* connection, xcb_atom_t atom) {
  static const auto library =
      reinterpret_cast<decltype(&xcb_get_atom_name)>(dlsym(RTLD_NEXT, "xcb_get_atom_name"));
  ++namesAskedFor;
  return library(connection, atom);
}

namespace lexwend::platform {
namespace {

using std::chrono::milliseconds;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using Clock = std::chrono::steady_clock;

/// Later than any event of the keys before it.
constexpr milliseconds kNextKey{100};
/// What a promised time is multiplied with, since other programs want the processor too.
constexpr int kLoad = 5;
/// Where a test is not about the budget, a loaded machine must not exceed it.
constexpr PasteboardBudget kAmpleBudget{.time = std::chrono::seconds(60),
                                        .silence = std::chrono::seconds(30),
                                        .takenOver = std::chrono::seconds(30)};
const OwnerTimes kAmpleTimes{.fetch = std::chrono::seconds(60)};
/// For the end of pasteboards that are no matter of the test.
const OwnerTimes kNoLastServe{.lastServe = milliseconds(0)};

std::string textOf(const Bytes& bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// Bytes without a period that a lost or doubled piece could hide in.
std::string bigValue(std::size_t size) {
  std::string value(size, '\0');
  std::uint32_t state = 1;
  for (char& c : value) {
    state = state * 1664525U + 1013904223U;
    c = static_cast<char>(state >> 24);
  }
  return value;
}

#ifndef LEXWEND_SANITIZED
std::size_t residentBytes() {
  std::ifstream status("/proc/self/statm");
  std::size_t size = 0;
  std::size_t resident = 0;
  status >> size >> resident;
  return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}
#endif

bool becomes(const std::function<bool()>& condition) {
  const auto deadline = Clock::now() + std::chrono::seconds(10);
  while (!condition()) {
    if (Clock::now() > deadline) return false;
    std::this_thread::sleep_for(milliseconds(2));
  }
  return true;
}

CopyingApplication::Behaviour plainText(const std::string& text) {
  return {{{"UTF8_STRING", {"UTF8_STRING", 8, text}}}};
}

struct ClipboardPasteboard : testing::Test {
  VirtualDisplay display;
  LinuxPasteboard pasteboard{kAmpleBudget, {}, [] {
                               OwnerTimes times = kAmpleTimes;
                               times.lastServe = milliseconds(0);
                               return times;
                             }()};
  PastingApplication other;

  /// What the pasteboard holds, as a snapshot takes it.
  std::vector<PasteboardItemData> snapshot(LinuxPasteboard& from) {
    std::vector<PasteboardItemData> items;
    const auto read = from.items();
    EXPECT_TRUE(read.has_value());
    for (const auto& item : *read) {
      PasteboardItemData data;
      for (const std::string& type : item->types()) {
        if (auto bytes = item->data(type)) data.emplace_back(type, std::move(*bytes));
      }
      items.push_back(std::move(data));
    }
    return items;
  }
  std::vector<PasteboardItemData> snapshot() { return snapshot(pasteboard); }
  bool countBecomesMoreThan(std::int64_t count) {
    const auto deadline = Clock::now() + std::chrono::seconds(10);
    while (pasteboard.changeCount() <= count && Clock::now() < deadline) {
      std::this_thread::sleep_for(milliseconds(1));
    }
    return pasteboard.changeCount() > count;
  }
};

TEST_F(ClipboardPasteboard, isEmptyWithoutOwner) {
  EXPECT_THAT(snapshot(), IsEmpty());
  EXPECT_EQ(pasteboard.string(), std::nullopt);
  EXPECT_TRUE(pasteboard.canBeGivenBack());
}

TEST_F(ClipboardPasteboard, countsEveryCopyAndTheEndOfAnOwner) {
  std::int64_t count = pasteboard.changeCount();
  {
    CopyingApplication application(plainText("one"));
    EXPECT_TRUE(countBecomesMoreThan(count));
    count = pasteboard.changeCount();
    application.copyAgain();
    EXPECT_TRUE(countBecomesMoreThan(count));
    count = pasteboard.changeCount();
    EXPECT_EQ(pasteboard.string(), "one");
    snapshot();
    EXPECT_EQ(pasteboard.changeCount(), count);
  }
  EXPECT_TRUE(countBecomesMoreThan(count));
  EXPECT_EQ(pasteboard.string(), std::nullopt);
}

TEST_F(ClipboardPasteboard, countsItsOwnWritesAtOnce) {
  const std::int64_t before = pasteboard.changeCount();
  pasteboard.setString("a");
  const std::int64_t afterSet = pasteboard.changeCount();
  EXPECT_EQ(afterSet, before + 1);
  pasteboard.writeItems({{{"image/png", bytesOf("png")}}});
  const std::int64_t afterWrite = pasteboard.changeCount();
  EXPECT_EQ(afterWrite, afterSet + 1);
  pasteboard.clearContents();
  EXPECT_EQ(pasteboard.changeCount(), afterWrite + 1);
}

TEST_F(ClipboardPasteboard, readsTextInWhicheverFormItIsOffered) {
  {
    CopyingApplication application(plainText("שלום"));
    EXPECT_EQ(pasteboard.string(), "שלום");
  }
  {
    CopyingApplication application({{{"text/plain;charset=utf-8", {"text/plain;charset=utf-8", 8, "אב"}}}});
    EXPECT_EQ(pasteboard.string(), "אב");
  }
  {
    CopyingApplication application({{{"STRING", {"STRING", 8, "caf\xE9"}}}});
    EXPECT_EQ(pasteboard.string(), "café");
  }
  {
    CopyingApplication application({{{"image/png", {"image/png", 8, "png"}}}});
    EXPECT_EQ(pasteboard.string(), std::nullopt);
  }
  CopyingApplication application(plainText(""));
  EXPECT_EQ(pasteboard.string().value_or(""), "");
}

TEST_F(ClipboardPasteboard, takesNoTextThatIsNotWellFormed) {
  const std::vector<std::string> texts = {"akuo\xED\xA0\xBD", "\xED\xB8\x80kuo", "ak\xD7",
                                          std::string("a\0\xFF", 3)};
  for (const std::string& text : texts) {
    CopyingApplication application(plainText(text));
    EXPECT_EQ(pasteboard.string(), std::nullopt);
    EXPECT_EQ(snapshot(), std::vector<PasteboardItemData>({{{"UTF8_STRING", bytesOf(text)}}}));
  }
  const std::string whole("a\0\xF0\x9F\x98\x80\0", 7);
  CopyingApplication application(plainText(whole));
  EXPECT_EQ(pasteboard.string(), whole);
}

TEST_F(ClipboardPasteboard, offersItsTextInEveryUsualForm) {
  pasteboard.setString("שלום");
  EXPECT_THAT(other.targets(),
              ElementsAre("TARGETS", "TIMESTAMP", "MULTIPLE", "UTF8_STRING", "text/plain;charset=utf-8",
                          "text/plain", "TEXT", "x-kde-passwordManagerHint"));
  EXPECT_EQ(other.paste("UTF8_STRING"), (SelectionValue{"UTF8_STRING", 8, "שלום"}));
  EXPECT_EQ(other.paste("TEXT"), (SelectionValue{"UTF8_STRING", 8, "שלום"}));
  EXPECT_EQ(other.paste("text/plain"), (SelectionValue{"text/plain", 8, "שלום"}));
  EXPECT_EQ(other.paste("x-kde-passwordManagerHint"),
            (SelectionValue{"x-kde-passwordManagerHint", 8, "secret"}));
  EXPECT_EQ(other.paste("image/png"), std::nullopt);
  const auto timestamp = other.paste("TIMESTAMP");
  ASSERT_TRUE(timestamp);
  EXPECT_EQ(timestamp->type, "INTEGER");
  EXPECT_NE(timestamp->bytes, std::string(4, '\0'));
  EXPECT_EQ(pasteboard.string(), "שלום");

  pasteboard.setString("café");
  EXPECT_EQ(other.paste("STRING"), (SelectionValue{"STRING", 8, "caf\xE9"}));
}

TEST_F(ClipboardPasteboard, answersSeveralTargetsAtOnce) {
  pasteboard.setString("abc");
  const auto values = other.pasteMultiple({"UTF8_STRING", "image/png", "TEXT"});
  ASSERT_EQ(values.size(), 2U);
  EXPECT_EQ(values.at("UTF8_STRING"), (SelectionValue{"UTF8_STRING", 8, "abc"}));
  EXPECT_EQ(values.at("TEXT"), (SelectionValue{"UTF8_STRING", 8, "abc"}));
}

TEST_F(ClipboardPasteboard, putsBackEveryTargetTypeByType) {
  const std::vector<std::pair<std::string, SelectionValue>> targets = {
      {"text/html", {"text/html", 8, std::string("<b>\0x</b>", 9)}},
      {"UTF8_STRING", {"UTF8_STRING", 8, "x"}},
      {"TEXT", {"STRING", 8, "x"}},
      {"STRING", {"STRING", 8, "x"}},
      {"text/x-moz-url", {"text/x-moz-url", 8, std::string("h\0t\0", 4)}},
      {"application/x-words", {"INTEGER", 32, std::string("\1\2\3\4\5\6\7\0", 8)}},
      {"application/x-halves", {"application/x-halves", 16, std::string("\1\2\3\4", 4)}},
      {"application/x-atom", {"ATOM", 32, atomBytes("application/x-atom")}},
      {"application/x-nothing", {"application/x-nothing", 8, ""}},
      {"image/png", {"image/png", 8, bigValue(std::size_t{3} * 1024 * 1024)}}};
  std::vector<PasteboardItemData> kept;
  {
    CopyingApplication application({targets});
    kept = snapshot();
    EXPECT_TRUE(pasteboard.canBeGivenBack());
  }
  ASSERT_EQ(kept.size(), 1U);
  ASSERT_EQ(kept[0].size(), targets.size());
  EXPECT_EQ(kept[0][0].first, "text/html");
  EXPECT_EQ(kept[0][2].first, "TEXT\tSTRING\t8");
  EXPECT_EQ(kept[0][5].first, "application/x-words\tINTEGER\t32");

  pasteboard.clearContents();
  pasteboard.setString("replacement");
  pasteboard.clearContents();
  pasteboard.writeItems(kept);
  pasteboard.changeCount();  // at once, not when the replacement has had its time
  std::vector<std::string> expected = {"TARGETS", "TIMESTAMP", "MULTIPLE"};
  for (const auto& [name, value] : targets) {
    expected.push_back(name);
    EXPECT_EQ(other.paste(name), value) << name;
  }
  EXPECT_EQ(other.targets(), expected);
  EXPECT_EQ(snapshot(), kept);
}

TEST_F(ClipboardPasteboard, doesNotAskForTargetsThatAreCommandsOrResources) {
  CopyingApplication application({{{"DELETE", {"NULL", 32, ""}},
                                   {"PIXMAP", {"PIXMAP", 32, "\1\2\3\4"}},
                                   {"INSERT_SELECTION", {"NULL", 32, ""}},
                                   {"UTF8_STRING", {"UTF8_STRING", 8, "x"}}}});
  const auto items = snapshot();
  ASSERT_EQ(items.size(), 1U);
  ASSERT_EQ(items[0].size(), 1U);
  EXPECT_THAT(application.requests(), ElementsAre("TARGETS", "UTF8_STRING"));
}

TEST_F(ClipboardPasteboard, leavesOutATargetThatIsOfferedButRefused) {
  CopyingApplication::Behaviour behaviour = plainText("x");
  behaviour.targets.push_back({"image/bmp", {"image/bmp", 8, "bmp"}});
  behaviour.refusedTargets = {"image/bmp"};
  CopyingApplication application(behaviour);
  const auto items = snapshot();
  ASSERT_EQ(items.size(), 1U);
  ASSERT_EQ(items[0].size(), 1U);
  EXPECT_TRUE(pasteboard.canBeGivenBack());
}

TEST_F(ClipboardPasteboard, leavesOutAnAnswerOfATypeThatNoNameCanCarry) {
  CopyingApplication user({{{"TEXT", {"a\tATOM\t32", 8, "x"}}, {"UTF8_STRING", {"UTF8_STRING", 8, "kept"}}}});
  EXPECT_EQ(snapshot(), std::vector<PasteboardItemData>({{{"UTF8_STRING", bytesOf("kept")}}}));
}

TEST_F(ClipboardPasteboard, readsTheTextOfAnOwnerTooOldForTargets) {
  CopyingApplication::Behaviour behaviour{{{"STRING", {"STRING", 8, "old"}}}};
  behaviour.answersTargets = false;
  CopyingApplication application(behaviour);
  const auto items = snapshot();
  ASSERT_EQ(items.size(), 1U);
  ASSERT_EQ(items[0].size(), 1U);
  EXPECT_EQ(items[0][0].first, "STRING");
}

TEST_F(ClipboardPasteboard, carries64MegabytesBothWays) {
  LinuxPasteboard patient(
      {std::chrono::seconds(60), std::chrono::seconds(60), std::size_t{256} * 1024 * 1024}, {}, kNoLastServe);
  const std::string image = bigValue(std::size_t{64} * 1024 * 1024);
  std::vector<PasteboardItemData> kept;
  {
    CopyingApplication::Behaviour behaviour{{{"image/png", {"image/png", 8, image}}}};
    behaviour.pieceSize = std::size_t{4} * 1024 * 1024;
    CopyingApplication application(behaviour);
    const auto start = Clock::now();
    kept = snapshot(patient);
    RecordProperty("read_ms", static_cast<int>((Clock::now() - start) / milliseconds(1)));
  }
  ASSERT_EQ(kept.size(), 1U);
  ASSERT_EQ(kept[0].size(), 1U);
  EXPECT_TRUE(textOf(kept[0][0].second) == image);
  patient.writeItems(kept);
  const auto start = Clock::now();
  const auto pasted = other.paste("image/png", std::chrono::seconds(60));
  RecordProperty("served_ms", static_cast<int>((Clock::now() - start) / milliseconds(1)));
  ASSERT_TRUE(pasted);
  EXPECT_TRUE(pasted->bytes == image);
}

TEST_F(ClipboardPasteboard, cannotGiveBackAnImageThatStopsHalfway) {
  LinuxPasteboard limited({.picture = milliseconds(1000)});
  CopyingApplication::Behaviour behaviour{{{"image/png", {"image/png", 8, bigValue(3000000)}}}};
  behaviour.lastPiece = 20;
  CopyingApplication application(behaviour);
  snapshot(limited);
  EXPECT_FALSE(limited.canBeGivenBack());
  EXPECT_TRUE(application.ownsSelection());
}

TEST_F(ClipboardPasteboard, remembersThatTheOwnerWasTooSlow) {
  LinuxPasteboard limited;
  CopyingApplication::Behaviour behaviour = plainText("x");
  for (int i = 0; i < 20; ++i) {
    behaviour.targets.push_back({"application/x-" + std::to_string(i), {"STRING", 8, "x"}});
  }
  behaviour.delay = milliseconds(60);
  {
    CopyingApplication slow(behaviour);
    const auto start = Clock::now();
    snapshot(limited);
    EXPECT_LT(Clock::now() - start, kLoad * PasteboardBudget().time);
    EXPECT_FALSE(limited.canBeGivenBack());
  }
  CopyingApplication quick(plainText("y"));
  // The late answer of before is not taken for the new one.
  EXPECT_EQ(snapshot(limited), (std::vector<PasteboardItemData>{{{"UTF8_STRING", bytesOf("y")}}}));
  EXPECT_TRUE(limited.canBeGivenBack());
  EXPECT_EQ(limited.string(), "y");
}

TEST_F(ClipboardPasteboard, remembersThatTheOwnerGaveTooMuch) {
  LinuxPasteboard small({std::chrono::seconds(10), std::chrono::seconds(10), 100000});
  CopyingApplication whole(
      {{{"text/html", {"text/html", 8, bigValue(60000)}}, {"text/rtf", {"text/rtf", 8, bigValue(60000)}}}});
  snapshot(small);
  EXPECT_FALSE(small.canBeGivenBack());
  CopyingApplication inPieces({{{"image/png", {"image/png", 8, bigValue(200000)}}}});
  snapshot(small);
  EXPECT_FALSE(small.canBeGivenBack());
  CopyingApplication fitting({{{"image/png", {"image/png", 8, bigValue(90000)}}}});
  EXPECT_EQ(snapshot(small).size(), 1U);
  EXPECT_TRUE(small.canBeGivenBack());
}

TEST_F(ClipboardPasteboard, keepsTheUsersContentsThroughFixesInQuickSuccession) {
  const std::string image = bigValue(3000000);
  CopyingApplication user(
      {{{"UTF8_STRING", {"UTF8_STRING", 8, "the user's"}}, {"image/png", {"image/png", 8, image}}}});
  const auto first = snapshot();
  CopyingApplication selection(plainText("akuo"));
  pasteboard.clearContents();
  pasteboard.setString("first");

  const auto second = snapshot();
  EXPECT_EQ(second, first) << "the user's own, not the text that passes";
  EXPECT_EQ(pasteboard.string(), "first");
  selection.copyAgain();
  pasteboard.clearContents();
  pasteboard.setString("second");
  // What the first fix puts back now must not be pasted in place of the second text.
  pasteboard.clearContents();
  pasteboard.writeItems(first);
  EXPECT_EQ(other.paste("UTF8_STRING").value_or(SelectionValue{}).bytes, "second");

  pasteboard.clearContents();
  pasteboard.writeItems(second);
  pasteboard.changeCount();
  EXPECT_EQ(other.paste("UTF8_STRING").value_or(SelectionValue{}).bytes, "the user's");
  EXPECT_EQ(other.paste("image/png").value_or(SelectionValue{}).bytes, image);
  EXPECT_THAT(other.targets(), Not(Contains("x-kde-passwordManagerHint")));
}

TEST_F(ClipboardPasteboard, keepsTheUsersContentsWhereAManagerTakesOverEachCopy) {
  std::unique_ptr<CopyingApplication> manager;
  const auto managerTakesOver = [&] {
    const std::string text = other.paste("UTF8_STRING").value_or(SelectionValue{}).bytes;
    manager = std::make_unique<CopyingApplication>(plainText(text));
    EXPECT_TRUE(manager->ownsSelection());
  };
  CopyingApplication user(plainText("the user's"));
  managerTakesOver();
  const auto first = snapshot();
  CopyingApplication selection(plainText("akuo"));
  managerTakesOver();
  pasteboard.clearContents();
  pasteboard.setString("first");
  managerTakesOver();

  const auto second = snapshot();
  EXPECT_EQ(second, first);
  pasteboard.clearContents();
  pasteboard.writeItems(first);
  pasteboard.changeCount();
  managerTakesOver();
  EXPECT_EQ(snapshot(), first);
  EXPECT_EQ(other.paste("UTF8_STRING").value_or(SelectionValue{}).bytes, "the user's");
}

TEST_F(ClipboardPasteboard, putsBackByItselfWhatHadToWait) {
  LinuxPasteboard own({}, {}, kNoLastServe);
  own.setString("passing");
  own.writeItems({{{"UTF8_STRING", bytesOf("lasting")}}});
  const auto deadline = Clock::now() + std::chrono::seconds(10);
  const auto text = [&] { return other.paste("UTF8_STRING").value_or(SelectionValue{}).bytes; };
  while (text() == "passing" && Clock::now() < deadline) std::this_thread::sleep_for(milliseconds(1));
  EXPECT_EQ(text(), "lasting");
}

TEST_F(ClipboardPasteboard, leavesWhatIsCopiedWhileSomethingWaitsToBePutBack) {
  pasteboard.setString("passing");
  pasteboard.writeItems({{{"UTF8_STRING", bytesOf("lasting")}}});
  std::this_thread::sleep_for(milliseconds(2));  // the server's clock counts milliseconds
  CopyingApplication user(plainText("the user's"));
  pasteboard.changeCount();
  EXPECT_TRUE(user.ownsSelection());
  EXPECT_EQ(pasteboard.string(), "the user's");
}

TEST_F(ClipboardPasteboard, findsAnEmptyClipboardBehindTheTextThatPasses) {
  EXPECT_THAT(snapshot(), IsEmpty());
  pasteboard.setString("first");
  EXPECT_THAT(snapshot(), IsEmpty());
}

TEST_F(ClipboardPasteboard, readsWhatTheUserCopiedAfterTheTextThatPasses) {
  CopyingApplication user(plainText("old"));
  snapshot();
  pasteboard.setString("first");
  CopyingApplication again(plainText("new"));
  EXPECT_EQ(snapshot(), (std::vector<PasteboardItemData>{{{"UTF8_STRING", bytesOf("new")}}}));
}

TEST_F(ClipboardPasteboard, doesNotWaitForEverForAnOwnerThatNeverAnswers) {
  LinuxPasteboard limited;
  CopyingApplication::Behaviour behaviour = plainText("x");
  behaviour.silentTargets = {"TARGETS", "UTF8_STRING"};
  CopyingApplication silent(behaviour);
  auto start = Clock::now();
  snapshot(limited);
  EXPECT_LT(Clock::now() - start, kLoad * PasteboardBudget().silence);
  EXPECT_FALSE(limited.canBeGivenBack());
  start = Clock::now();
  EXPECT_EQ(limited.string(), std::nullopt);
  EXPECT_LT(Clock::now() - start, kLoad * LinuxPasteboard::kStringTime);
}

TEST_F(ClipboardPasteboard, findsTheClipboardEmptyWhenItsOwnerDiesWhileItIsRead) {
  CopyingApplication::Behaviour behaviour = plainText("x");
  behaviour.targets.push_back({"image/png", {"image/png", 8, bigValue(1000000)}});
  behaviour.deadlyTargets = {"UTF8_STRING"};
  {
    CopyingApplication dying(behaviour);
    EXPECT_THAT(snapshot(), IsEmpty());
    EXPECT_TRUE(pasteboard.canBeGivenBack());
  }
  behaviour.deadlyTargets = {};
  behaviour.deadlyPiece = 3;
  CopyingApplication dying(behaviour);
  EXPECT_THAT(snapshot(), IsEmpty());
  EXPECT_TRUE(pasteboard.canBeGivenBack());
}

TEST_F(ClipboardPasteboard, servesWhileTheMainThreadSleeps) {
  pasteboard.setString("שלום");
  auto pasted = std::async(std::launch::async, [] {
    PastingApplication application;
    std::vector<std::string> texts(20);
    for (std::string& text : texts) {
      text = application.paste("UTF8_STRING").value_or(SelectionValue{}).bytes;
    }
    return texts;
  });
  ASSERT_EQ(pasted.wait_for(std::chrono::seconds(60)),
            std::future_status::ready);  // sleeps, and iterates nothing
  EXPECT_EQ(pasted.get(), std::vector<std::string>(20, "שלום"));
}

TEST_F(ClipboardPasteboard, servesAnotherWhileOneRequestorTakesNothing) {
  pasteboard.writeItems({{{"image/png", bytesOf(bigValue(3000000))}}});
  PastingApplication stuck;
  stuck.pasteAndStop("image/png");
  EXPECT_EQ(other.paste("image/png").value_or(SelectionValue{}).bytes, bigValue(3000000));
}

TEST_F(ClipboardPasteboard, survivesARequestorThatGoesAway) {
  pasteboard.writeItems({{{"image/png", bytesOf(bigValue(3000000))}}});
  {
    PastingApplication leaving;
    leaving.pasteAndStop("image/png");
  }
  EXPECT_EQ(other.paste("image/png").value_or(SelectionValue{}).bytes.size(), 3000000U);
}

TEST_F(ClipboardPasteboard, finishesATransferThoughTheClipboardHasANewOwner) {
  const std::string image = bigValue(3000000);
  pasteboard.writeItems({{{"image/png", bytesOf(image)}}});
  other.pasteAndStop("image/png");
  CopyingApplication next(plainText("next"));
  EXPECT_EQ(pasteboard.string(), "next");
  EXPECT_EQ(other.takePieces(std::chrono::seconds(10)).value_or(SelectionValue{}).bytes, image);
}

TEST_F(ClipboardPasteboard, letsGoWhenAnotherApplicationCopies) {
  pasteboard.setString("mine");
  CopyingApplication application(plainText("theirs"));
  EXPECT_EQ(pasteboard.string(), "theirs");
  EXPECT_EQ(other.paste("UTF8_STRING").value_or(SelectionValue{}).bytes, "theirs");
  pasteboard.setString("mine again");
  EXPECT_EQ(other.paste("UTF8_STRING").value_or(SelectionValue{}).bytes, "mine again");
  EXPECT_FALSE(application.ownsSelection());
}

TEST_F(ClipboardPasteboard, clearsWithoutAnEmptyMomentBeforeAWrite) {
  pasteboard.setString("a");
  const std::int64_t count = pasteboard.changeCount();
  pasteboard.clearContents();
  pasteboard.setString("b");
  EXPECT_EQ(pasteboard.changeCount(), count + 1);  // one claim, no clipboard without owner between
  EXPECT_EQ(other.paste("UTF8_STRING").value_or(SelectionValue{}).bytes, "b");
}

TEST_F(ClipboardPasteboard, isClearedForOthersToo) {
  CopyingApplication application(plainText("x"));
  pasteboard.clearContents();
  EXPECT_THAT(snapshot(), IsEmpty());
  EXPECT_FALSE(other.selectionHasOwner());

  LinuxPasteboard own;
  own.setString("mine");
  own.clearContents();
  const auto deadline = Clock::now() + std::chrono::seconds(10);
  while (other.selectionHasOwner() && Clock::now() < deadline) std::this_thread::sleep_for(milliseconds(1));
  EXPECT_FALSE(other.selectionHasOwner());  // without any further call
}

TEST_F(ClipboardPasteboard, doesNotClearWhatIsCopiedRightAfterTheClear) {
  CopyingApplication application(plainText("x"));
  for (int i = 0; i < 10; ++i) {
    pasteboard.clearContents();
    // The server's clock counts milliseconds.
    std::this_thread::sleep_for(milliseconds(2));
    application.copyAgain();
    pasteboard.changeCount();  // the clear is carried out
    EXPECT_TRUE(application.ownsSelection());
  }
}

TEST_F(ClipboardPasteboard, mergesItemsIntoOne) {
  pasteboard.writeItems({{{"UTF8_STRING", bytesOf("first")}},
                         {{"UTF8_STRING", bytesOf("second")}, {"image/png", bytesOf("png")}}});
  EXPECT_EQ(other.paste("UTF8_STRING").value_or(SelectionValue{}).bytes, "first");
  EXPECT_EQ(other.paste("image/png").value_or(SelectionValue{}).bytes, "png");
  EXPECT_THAT(other.targets(), Not(Contains("x-kde-passwordManagerHint")));
}

TEST_F(ClipboardPasteboard, writingNothingLeavesItEmpty) {
  pasteboard.setString("x");
  pasteboard.clearContents();
  pasteboard.writeItems({});
  pasteboard.changeCount();
  EXPECT_FALSE(other.selectionHasOwner());
}

TEST_F(ClipboardPasteboard, neverClaimsPrimary) {
  CopyingApplication selecting(plainText("selected"), "PRIMARY");
  pasteboard.setString("x");
  pasteboard.clearContents();
  pasteboard.writeItems({{{"UTF8_STRING", bytesOf("y")}}});
  snapshot();
  EXPECT_TRUE(selecting.ownsSelection());
  EXPECT_THAT(selecting.requests(), IsEmpty());
}

TEST_F(ClipboardPasteboard, worksWithAnIndependentClient) {
  const test::TemporaryFolder folder;
  const std::string file = folder.file("clipboard");
  const std::int64_t count = pasteboard.changeCount();
  ASSERT_EQ(runProgram("head -c 3000000 /dev/urandom | base64 > " + file +
                       " && xclip -selection clipboard -i " + file + " >/dev/null 2>&1"),
            0);
  ASSERT_TRUE(countBecomesMoreThan(count));
  const auto kept = snapshot();
  ASSERT_EQ(kept.size(), 1U);
  pasteboard.writeItems(kept);
  EXPECT_EQ(runProgram("xclip -selection clipboard -o -t UTF8_STRING | cmp - " + file), 0);
  pasteboard.setString("שלום");
  EXPECT_EQ(runProgram("test \"$(xclip -selection clipboard -o)\" = 'שלום'"), 0);
}

struct PasteboardAtTheEnd : testing::Test {
  /// The main loop turns until nothing is left to do.
  void turnMainLoop() {
    while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
    }
  }
  VirtualDisplay display;
  PastingApplication other;
  std::unique_ptr<LinuxPasteboard> pasteboard = std::make_unique<LinuxPasteboard>();
};

TEST_F(PasteboardAtTheEnd, handsItsContentsToTheClipboardManager) {
  ManagingApplication manager;
  const std::string image = bigValue(3000000);
  pasteboard->writeItems({{{"UTF8_STRING", bytesOf("text")}, {"image/png", bytesOf(image)}}});
  pasteboard.reset();
  EXPECT_EQ(manager.saved(),
            (std::map<std::string, SelectionValue>{{"UTF8_STRING", {"UTF8_STRING", 8, "text"}},
                                                   {"image/png", {"image/png", 8, image}}}));
}

TEST_F(PasteboardAtTheEnd, doesNotHandOverTextThatOnlyPassesThrough) {
  ManagingApplication manager;
  pasteboard->setString("passing");
  pasteboard.reset();
  EXPECT_THAT(manager.saved(), IsEmpty());
}

TEST_F(PasteboardAtTheEnd, handsOverWhatWasThereBeforeTheTextThatPassesThrough) {
  ManagingApplication manager;
  {
    CopyingApplication user(
        {{{"UTF8_STRING", {"UTF8_STRING", 8, "the user's"}}, {"TEXT", {"STRING", 8, "text"}}}});
    pasteboard->items();
    pasteboard->clearContents();
    pasteboard->setString("passing");
  }
  pasteboard.reset();
  EXPECT_EQ(manager.saved(),
            (std::map<std::string, SelectionValue>{{"UTF8_STRING", {"UTF8_STRING", 8, "the user's"}},
                                                   {"TEXT", {"STRING", 8, "text"}}}));
}

TEST_F(PasteboardAtTheEnd, hasForgottenWhatItReadWhenNothingWasWritten) {
  ManagingApplication manager;
  CopyingApplication user(plainText("the user's"));
  pasteboard->items();
  turnMainLoop();
  pasteboard->setString("passing");
  pasteboard.reset();
  EXPECT_THAT(manager.saved(), IsEmpty());
}

TEST_F(PasteboardAtTheEnd, keepsWhatItReadWhileTextPasses) {
  ManagingApplication manager;
  CopyingApplication user(plainText("the user's"));
  pasteboard->items();
  pasteboard->setString("passing");
  turnMainLoop();
  pasteboard.reset();
  EXPECT_EQ(manager.saved(),
            (std::map<std::string, SelectionValue>{{"UTF8_STRING", {"UTF8_STRING", 8, "the user's"}}}));
}

TEST_F(PasteboardAtTheEnd, leavesWhatAnotherCopiedAfterThePassingText) {
  ManagingApplication manager;
  CopyingApplication user(plainText("the user's"));
  pasteboard->items();
  pasteboard->setString("passing");
  CopyingApplication next(plainText("next"));
  pasteboard.reset();
  EXPECT_THAT(manager.saved(), IsEmpty());
  EXPECT_TRUE(next.ownsSelection());
}

TEST_F(PasteboardAtTheEnd, handsNothingOverThatIsNotItsOwn) {
  ManagingApplication manager;
  pasteboard->writeItems({{{"UTF8_STRING", bytesOf("old")}}});
  CopyingApplication next(plainText("next"));
  pasteboard.reset();
  EXPECT_THAT(manager.saved(), IsEmpty());
  EXPECT_TRUE(next.ownsSelection());
}

TEST_F(PasteboardAtTheEnd, doesNotWaitForEverForAManager) {
  CopyingApplication::Behaviour behaviour;
  behaviour.silentTargets = {"SAVE_TARGETS"};
  CopyingApplication silentManager(behaviour, "CLIPBOARD_MANAGER");
  pasteboard->writeItems({{{"UTF8_STRING", bytesOf("text")}}});
  const auto start = Clock::now();
  pasteboard.reset();
  EXPECT_GE(Clock::now() - start, OwnerTimes().handOver);
  EXPECT_LT(Clock::now() - start, kLoad * OwnerTimes().handOver);
  EXPECT_THAT(silentManager.requests(), ElementsAre("SAVE_TARGETS"));
}

TEST_F(PasteboardAtTheEnd, goesOnServingUntilSomebodyHasFetchedWhereThereIsNoManager) {
  pasteboard->writeItems({{{"UTF8_STRING", bytesOf("text")}}});
  const auto start = Clock::now();
  pasteboard.reset();
  EXPECT_GE(Clock::now() - start, OwnerTimes().lastServe) << "nobody has fetched it";
  EXPECT_LT(Clock::now() - start, kLoad * OwnerTimes().lastServe);

  // Long enough that the first fetch comes within it on a busy machine too.
  constexpr std::chrono::seconds kWatchers(5);
  pasteboard = std::make_unique<LinuxPasteboard>(
      PasteboardBudget{}, LinuxPasteboard::Needs{},
      OwnerTimes{.lastServe = std::chrono::seconds(60), .watchers = kWatchers});
  pasteboard->writeItems({{{"UTF8_STRING", bytesOf("text")}}});
  auto ended = std::async(std::launch::async, [this] { pasteboard.reset(); });
  EXPECT_EQ(other.paste("UTF8_STRING").value_or(SelectionValue{}).bytes, "text");
  EXPECT_EQ(ended.wait_for(kWatchers + milliseconds(100)), std::future_status::timeout)
      << "a history of the clipboard";
  EXPECT_EQ(other.paste("UTF8_STRING").value_or(SelectionValue{}).bytes, "text");
  EXPECT_EQ(ended.wait_for(std::chrono::seconds(30)), std::future_status::ready);
}

TEST_F(PasteboardAtTheEnd, endsAtOnceWithNothingOfItsOwn) {
  CopyingApplication user(plainText("the user's"));
  pasteboard->items();
  const auto start = Clock::now();
  pasteboard.reset();
  EXPECT_LT(Clock::now() - start, OwnerTimes().lastServe);
}

/// A fix in an application whose window is in front, by a pasteboard that is told of its shortcuts.
struct PasteboardOfAFix : testing::Test {
  VirtualDisplay display;
  std::optional<PlayedShortcut> copy;
  std::optional<PlayedShortcut> paste;
  OwnerTimes times{
      .lastServe = milliseconds(0), .patience = std::chrono::seconds(600), .secondFetch = milliseconds(0)};
  std::unique_ptr<LinuxPasteboard> pasteboard = make();
  PastingApplication editor;
  /// Another program, in a process of its own.
  StrangeClient stranger;

  std::unique_ptr<LinuxPasteboard> make() {
    return std::make_unique<LinuxPasteboard>(
        kAmpleBudget, LinuxPasteboard::Needs{[this] { return copy; }, [this] { return paste; }}, times);
  }
  PlayedShortcut played() { return {editor.application(), editor.window(), Clock::now()}; }
  std::string read(PastingApplication& by) {
    return by.paste("UTF8_STRING").value_or(SelectionValue{}).bytes;
  }
  void copyAndPaste(const std::string& text) {
    copy = played();
    pasteboard->clearContents();
    pasteboard->setString(text);
    paste = played();
  }
  /// The same in an application whose process is stopped after the paste shortcut.
  void copyAndPasteHeldUp(const ChildProcess& process) {
    copyAndPaste("replacement");
    process.stop();
    paste->process = process.number();
  }
  /// Two fixes in quick succession, whose restores are still to come.
  void pasteTwice() {
    for (const char* text : {"first", "second"}) {
      pasteboard->items();
      copyAndPaste(text);
      EXPECT_EQ(read(editor), text);
      std::this_thread::sleep_for(milliseconds(1));
    }
  }
  /// A whole fix of that text, up to the restore.
  void fixWithAnEmptyClipboard(const std::string& text) {
    pasteboard->items();
    copy = played();
    {
      const CopyingApplication copied(plainText(text));
      EXPECT_EQ(pasteboard->string(), text);
    }
    pasteboard->clearContents();
    pasteboard->setString("replacement");
    paste = played();
    EXPECT_EQ(read(editor), "replacement");
    pasteboard->clearContents();
    EXPECT_TRUE(becomes([&] { return !editor.selectionHasOwner(); }));
  }
  void restore() { restore(kept); }
  void restore(const std::vector<PasteboardItemData>& items) {
    pasteboard->clearContents();
    pasteboard->writeItems(items);
    pasteboard->changeCount();
  }
  void turnMainLoop() {
    while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
    }
  }
  const std::vector<PasteboardItemData> kept{{{"UTF8_STRING", bytesOf("the user's")}}};
};

TEST_F(PasteboardOfAFix, keepsServingTheReplacementUntilTheApplicationHasFetchedIt) {
  copyAndPaste("replacement");
  EXPECT_EQ(stranger.paste(), "replacement") << "a fetch of somebody else's";
  restore();
  EXPECT_EQ(stranger.paste(), "the user's") << "only the application waits";
  EXPECT_EQ(read(editor), "replacement");
  EXPECT_TRUE(becomes([&] { return read(editor) == "the user's"; }));
  EXPECT_EQ(stranger.paste(), "the user's");
}

TEST_F(PasteboardOfAFix, servesTheReplacementThoughTheFixBeforeHasPutBackWhatItHadTo) {
  copyAndPaste("first");
  EXPECT_EQ(read(editor), "first");
  std::this_thread::sleep_for(milliseconds(1));
  copyAndPaste("second");
  restore();  // of the first fix
  turnMainLoop();
  std::this_thread::sleep_for(OwnerTimes().fetch);
  restore();  // of the second
  EXPECT_EQ(stranger.paste(), "the user's");
  EXPECT_EQ(read(editor), "second");
  EXPECT_TRUE(becomes([&] { return read(editor) == "the user's"; }));
}

TEST_F(PasteboardOfAFix, keepsWhatTheUserCopiesBeforeTheFixBeforeHasPutBackWhatItHadTo) {
  for (const char* text : {"copied first", "copied second"}) {
    const CopyingApplication user(plainText(text));
    pasteboard->items();
    copyAndPaste("replacement");
    EXPECT_EQ(read(editor), "replacement");
    std::this_thread::sleep_for(milliseconds(1));
  }
  restore({{{"UTF8_STRING", bytesOf("copied first")}}});
  turnMainLoop();
  EXPECT_EQ(stranger.paste(), "copied second");
  EXPECT_TRUE(becomes([&] { return read(editor) == "copied second"; }));
  restore({{{"UTF8_STRING", bytesOf("copied second")}}});
  turnMainLoop();
  EXPECT_TRUE(becomes([&] { return stranger.paste() == "copied second"; }));
}

TEST_F(PasteboardOfAFix, keepsWhatALaterFixThatFailedHasPutBack) {
  const CopyingApplication first(plainText("copied first"));
  pasteboard->items();
  copyAndPaste("replacement");
  EXPECT_EQ(read(editor), "replacement");
  std::this_thread::sleep_for(kNextKey);
  const CopyingApplication second(plainText("copied second"));
  pasteboard->items();
  const xcb_timestamp_t pressed = PastingApplication().serverTime();  // with no older event in its queue
  copy = played();
  CopyingApplication selection(plainText("123"), "CLIPBOARD", pressed);
  EXPECT_TRUE(becomes([&] { return selection.ownsSelection(); }));
  EXPECT_EQ(pasteboard->string(), "123");
  restore({{{"UTF8_STRING", bytesOf("copied second")}}});  // at once: there is nothing to change
  turnMainLoop();
  restore({{{"UTF8_STRING", bytesOf("copied first")}}});  // half a second after the first paste
  turnMainLoop();
  EXPECT_TRUE(becomes([&] { return read(editor) == "copied second"; }));
}

TEST_F(PasteboardOfAFix, isNotEmptiedAfterALaterFixHasPutBackWhatItRead) {
  pasteboard->items();
  copyAndPaste("replacement");
  EXPECT_EQ(read(editor), "replacement");
  std::this_thread::sleep_for(kNextKey);
  const CopyingApplication user(plainText("copied since"));
  pasteboard->items();
  const xcb_timestamp_t pressed = PastingApplication().serverTime();  // with no older event in its queue
  copy = played();
  CopyingApplication selection(plainText("123"), "CLIPBOARD", pressed);
  EXPECT_TRUE(becomes([&] { return selection.ownsSelection(); }));
  restore({{{"UTF8_STRING", bytesOf("copied since")}}});
  turnMainLoop();
  restore({});  // of the first fix, which had found nothing
  turnMainLoop();
  EXPECT_TRUE(becomes([&] { return read(editor) == "copied since"; }));
}

TEST_F(PasteboardOfAFix, leavesWhatTheUserCopiesBetweenTheRestoresOfTwoFixes) {
  const CopyingApplication user(plainText("the user's"));
  pasteTwice();
  restore();
  turnMainLoop();
  EXPECT_TRUE(becomes([&] { return read(editor) == "the user's"; }));
  std::this_thread::sleep_for(kNextKey);
  const CopyingApplication again(plainText("copied since"));
  restore();
  turnMainLoop();
  EXPECT_EQ(read(editor), "copied since");
}

TEST_F(PasteboardOfAFix, leavesWhatTheUserCopiesBeforeALaterFixThatReadsInVain) {
  const CopyingApplication user(plainText("the user's"));
  pasteTwice();
  restore();  // of the first
  turnMainLoop();
  std::this_thread::sleep_for(kNextKey);
  const CopyingApplication again(plainText("copied since"));
  pasteboard->items();  // of a third, which goes no further
  turnMainLoop();
  restore();  // of the second
  turnMainLoop();
  EXPECT_EQ(read(editor), "copied since");
}

TEST_F(PasteboardOfAFix, leavesWhatTheUserCopiesBeforeALaterFixWhoseCopyIsNotAnswered) {
  const CopyingApplication user(plainText("the user's"));
  pasteTwice();
  restore();  // of the first
  turnMainLoop();
  std::this_thread::sleep_for(kNextKey);
  const CopyingApplication again(plainText("copied since"));
  pasteboard->items();  // of a third, whose copy shortcut nobody answers
  copy = played();
  restore();  // of the second
  turnMainLoop();
  EXPECT_EQ(read(editor), "copied since");
}

TEST_F(PasteboardOfAFix, tellsWhetherThePasteIsStillToBeFetched) {
  EXPECT_FALSE(pasteboard->pasteIsUnderWay());
  copyAndPaste("replacement");
  EXPECT_EQ(stranger.paste(), "replacement");
  EXPECT_TRUE(pasteboard->pasteIsUnderWay());
  restore();
  EXPECT_TRUE(pasteboard->pasteIsUnderWay());
  EXPECT_EQ(read(editor), "replacement");
  EXPECT_FALSE(pasteboard->pasteIsUnderWay());
}

TEST_F(PasteboardOfAFix, isNotFetchedByAProgramThatDoesNotPaste) {
  copyAndPaste("replacement");
  EXPECT_TRUE(becomes([&] { return !pasteboard->pasteIsUnderWay(); }));
  EXPECT_GE(Clock::now() - paste->time, std::chrono::seconds(2));
}

TEST_F(PasteboardOfAFix, isEmptyAgainOnlyAfterTheApplicationHasFetchedTheReplacement) {
  copyAndPaste("replacement");
  pasteboard->clearContents();
  pasteboard->changeCount();
  EXPECT_EQ(stranger.paste(), "");
  EXPECT_EQ(read(editor), "replacement");
  EXPECT_TRUE(becomes([&] { return !editor.selectionHasOwner(); }));
}

TEST_F(PasteboardOfAFix, isEmptyAgainThoughAHistoryFillsItWithWhatTheFixHadCopied) {
  fixWithAnEmptyClipboard("copied");
  CopyingApplication history(plainText("copied"));
  EXPECT_TRUE(pumpUntil([&] { return !history.ownsSelection(); }));
  EXPECT_EQ(stranger.paste(), "");
  EXPECT_EQ(editor.paste("x-kde-passwordManagerHint").value_or(SelectionValue{}).bytes, "secret");

  fixWithAnEmptyClipboard("copied");
  CopyingApplication secondHistory(plainText("copied"));
  pasteboard->items();  // of the next fix, which comes before the history was noticed
  EXPECT_FALSE(secondHistory.ownsSelection());
}

TEST_F(PasteboardOfAFix, leavesWhatTheUserCopiesToAnEmptyClipboardAfterIt) {
  fixWithAnEmptyClipboard("copied");
  CopyingApplication user(plainText("the user's"));
  EXPECT_FALSE(pumpUntil([&] { return !user.ownsSelection(); }, std::chrono::seconds(3)));
  CopyingApplication late(plainText("copied"));
  EXPECT_FALSE(pumpUntil([&] { return !late.ownsSelection(); }, milliseconds(300)));
}

TEST_F(PasteboardOfAFix, countsNoFetchFromBeforeThePaste) {
  copy = played();
  pasteboard->setString("replacement");
  EXPECT_EQ(read(editor), "replacement");  // as an editor that looks at each new clipboard
  std::this_thread::sleep_for(milliseconds(1));
  paste = played();
  restore();
  EXPECT_EQ(stranger.paste(), "the user's");
  EXPECT_EQ(read(editor), "replacement");
}

TEST_F(PasteboardOfAFix, givesBackWhatWasFetchedBefore) {
  copyAndPaste("replacement");
  EXPECT_EQ(read(editor), "replacement");
  restore();
  EXPECT_TRUE(becomes([&] { return read(editor) == "the user's"; }));
}

TEST_F(PasteboardOfAFix, servesASecondFetchThatFollowsTheFirst) {
  times.secondFetch = std::chrono::seconds(600);
  pasteboard = make();
  copyAndPaste("replacement");
  restore();
  EXPECT_EQ(read(editor), "replacement") << "for a history of the clipboard";
  EXPECT_EQ(read(editor), "replacement") << "for the paste";
  EXPECT_EQ(stranger.paste(), "the user's");
}

TEST_F(PasteboardOfAFix, servesASecondFetchOfAnApplicationThatIsHeldUpAfterTheFirst) {
  times.secondFetch = milliseconds(50);
  pasteboard = make();
  const ChildProcess process([] { pause(); });
  copyAndPasteHeldUp(process);
  restore();
  EXPECT_EQ(read(editor), "replacement") << "for a history of the clipboard";
  std::this_thread::sleep_for(4 * times.secondFetch);
  EXPECT_EQ(read(editor), "replacement") << "for the paste";
  process.goOn();
  EXPECT_TRUE(becomes([&] { return read(editor) == "the user's"; }));
}

TEST_F(PasteboardOfAFix, losesPatienceWithAnApplicationThatStaysHeldUpAfterTheFirstFetch) {
  times.patience = std::chrono::seconds(1);
  pasteboard = make();
  const ChildProcess process([] { pause(); });
  copyAndPasteHeldUp(process);
  restore();
  EXPECT_EQ(read(editor), "replacement");
  EXPECT_TRUE(becomes([&] { return read(editor) == "the user's"; }));
  EXPECT_GE(Clock::now() - paste->time, times.patience);
}

TEST_F(PasteboardOfAFix, waitsForTheEndOfAFetchInPieces) {
  const std::string text = std::string(3000000, 'x');
  copyAndPaste(text);
  editor.pasteAndStop("UTF8_STRING");
  restore();
  EXPECT_EQ(stranger.paste(), "the user's");
  EXPECT_EQ(editor.takePieces(std::chrono::seconds(30)).value_or(SelectionValue{}).bytes, text);
  EXPECT_TRUE(becomes([&] { return read(editor) == "the user's"; }));
}

TEST_F(PasteboardOfAFix, waitsNoLongerForAWindowThatHasGone) {
  auto leaving = std::make_unique<PastingApplication>();
  copyAndPaste("replacement");
  paste = PlayedShortcut{leaving->application(), leaving->window(), Clock::now()};
  restore();
  leaving.reset();
  EXPECT_TRUE(becomes([&] { return read(editor) == "the user's"; }));
}

TEST_F(PasteboardOfAFix, losesPatienceWithAnApplicationThatNeverFetches) {
  times.patience = std::chrono::seconds(1);
  pasteboard.reset();
  pasteboard = make();
  copyAndPaste("replacement");
  const auto count = pasteboard->changeCount();
  restore();
  // To ask as the editor would be a fetch.
  EXPECT_TRUE(becomes([&] { return pasteboard->changeCount() > count; }));
  EXPECT_GE(Clock::now() - paste->time, times.patience);
  EXPECT_EQ(read(editor), "the user's");
}

TEST_F(PasteboardOfAFix, leavesWhatTheUserCopiesAfterThePaste) {
  copyAndPaste("replacement");
  EXPECT_EQ(read(editor), "replacement");
  std::this_thread::sleep_for(kNextKey);
  CopyingApplication user(plainText("copied since"));
  restore();
  EXPECT_TRUE(user.ownsSelection());
  EXPECT_EQ(read(editor), "copied since");
}

TEST_F(PasteboardOfAFix, leavesWhatTheUserCopiesRightBeforeItPutsBack) {
  const auto owner = OwnerThread::open(times, selectionsOfX());
  owner->pass(passingTextContents("replacement"));
  std::this_thread::sleep_for(milliseconds(2));  // the server's clock counts milliseconds
  EXPECT_TRUE(owner->lastChange().isOwn);
  CopyingApplication user(plainText("copied since"));
  owner->clear(std::nullopt);
  owner->stay(passingTextContents("the user's"), std::nullopt);
  owner->settle();
  owner->lastChange();
  EXPECT_TRUE(user.ownsSelection());
}

TEST_F(PasteboardOfAFix, leavesWhatTheUserCopiesWhileTheReplacementWaitsToBeFetched) {
  copyAndPaste("replacement");
  restore();
  std::this_thread::sleep_for(milliseconds(2));  // the server's clock counts milliseconds
  CopyingApplication user(plainText("copied since"));
  EXPECT_EQ(read(editor), "copied since");
  pasteboard->changeCount();
  EXPECT_TRUE(user.ownsSelection());
}

TEST_F(PasteboardOfAFix, replacesTheReplacementThatAManagerHasTakenOver) {
  copyAndPaste("replacement");
  CopyingApplication manager(plainText("replacement"));
  restore();
  EXPECT_EQ(read(editor), "the user's");
}

TEST_F(PasteboardOfAFix, takesOnlyWhatTheApplicationHasCopied) {
  pasteboard->items();
  copy = played();
  stranger.copy("somebody else's");
  EXPECT_EQ(pasteboard->string(), std::nullopt);
  EXPECT_EQ(stranger.requests(), 0) << "it is not even asked";
  CopyingApplication selection(plainText("akuo"));  // of the editor's process
  EXPECT_EQ(pasteboard->string(), "akuo");
}

TEST_F(PasteboardOfAFix, takesACopyThatTheClipboardManagerHasTakenOver) {
  pasteboard->items();
  copy = played();
  stranger.copy("akuo");
  stranger.becomeManager();
  EXPECT_EQ(pasteboard->string(), "akuo");
}

TEST_F(PasteboardOfAFix, leavesWhatSomebodyElseCopiesWhileTheCopyIsWaitedFor) {
  pasteboard->items();
  copy = played();
  stranger.copy("somebody else's");
  restore();
  EXPECT_EQ(read(editor), "somebody else's");
}

TEST_F(PasteboardOfAFix, putsBackWhatTheCopyOfNoTextHasReplaced) {
  pasteboard->items();
  copy = played();
  CopyingApplication image({{{"image/png", {"image/png", 8, "png"}}}});
  EXPECT_EQ(pasteboard->string(), std::nullopt);
  restore();
  EXPECT_EQ(read(editor), "the user's");
}

TEST_F(PasteboardOfAFix, takesNoFilesForText) {
  for (const char* target : {"text/uri-list", "x-special/gnome-copied-files"}) {
    CopyingApplication::Behaviour behaviour = plainText("/home/user/file");
    behaviour.targets.push_back({target, {target, 8, "file:///home/user/file"}});
    CopyingApplication files(behaviour);
    EXPECT_EQ(pasteboard->string(), std::nullopt) << target;
  }
}

TEST_F(PasteboardOfAFix, asksAgainForTextThatIsRefusedForAMoment) {
  CopyingApplication::Behaviour behaviour = plainText("שלום");
  behaviour.targets.push_back({"STRING", {"STRING", 8, "\\u05e9"}});
  behaviour.firstRefusals = {{"UTF8_STRING", 3}};
  CopyingApplication editing(behaviour);
  EXPECT_EQ(pasteboard->string(), "שלום");
  EXPECT_THAT(editing.requests(), Not(Contains("STRING")));
}

#ifndef LEXWEND_SANITIZED  // AddressSanitizer keeps what is freed for a while
TEST_F(PasteboardOfAFix, givesBackTheMemoryThatAFixHasUsed) {
  constexpr std::size_t kWords = 300000;
  constexpr std::size_t kWordBytes = 100;
  const std::size_t before = residentBytes();
  pasteboard->items();
  // A large text is converted word by word, and something small that stays is made after the last word.
  std::vector<std::string> words(kWords, std::string(kWordBytes, 'x'));
  const std::string after(kWordBytes, 'x');
  words = {};
  copyAndPaste("replacement");
  EXPECT_EQ(read(editor), "replacement");
  restore();
  turnMainLoop();
  EXPECT_LT(residentBytes(), before + kWords * kWordBytes / 2);
}
#endif

TEST_F(PasteboardOfAFix, undoesACopyThatComesAfterTheFixHasGivenUp) {
  CopyingApplication user(plainText("the user's"));
  pasteboard->items();
  std::this_thread::sleep_for(milliseconds(2));
  copy = played();
  const xcb_timestamp_t pressed = editor.serverTime();
  turnMainLoop();  // the fix has ended
  std::this_thread::sleep_for(kNextKey);
  CopyingApplication late(plainText("akuo"), "CLIPBOARD", pressed);
  EXPECT_TRUE(becomes([&] { return read(editor) == "the user's"; }));
  EXPECT_FALSE(late.ownsSelection());
}

TEST_F(PasteboardOfAFix, undoesACopyThatCameAsTheFixGaveUp) {
  CopyingApplication user(plainText("the user's"));
  pasteboard->items();
  copy = played();
  CopyingApplication late(plainText("akuo"), "CLIPBOARD", editor.serverTime());
  turnMainLoop();
  EXPECT_TRUE(becomes([&] { return read(editor) == "the user's"; }));
}

TEST_F(PasteboardOfAFix, undoesACopyThatBearsALaterTimeThanTheKeyOfAnApplicationThatHadStopped) {
  CopyingApplication user(plainText("the user's"));
  pasteboard->items();
  copy = played();
  std::this_thread::sleep_for(kNextKey);
  CopyingApplication late(plainText("akuo"), "CLIPBOARD", editor.serverTime());
  restore();  // the fix has waited as long as it may
  turnMainLoop();
  EXPECT_TRUE(becomes([&] { return read(editor) == "the user's"; }));
}

TEST_F(PasteboardOfAFix, leavesWhatTheUserCopiesThereAfterAFixThatGaveUp) {
  CopyingApplication user(plainText("the user's"));
  pasteboard->items();
  copy = played();
  turnMainLoop();
  std::this_thread::sleep_for(kNextKey);
  const auto count = pasteboard->changeCount();
  CopyingApplication again(plainText("copied since"));
  EXPECT_TRUE(becomes([&] { return pasteboard->changeCount() > count; }));
  pasteboard->setString("x");  // after whatever the change has led to
  EXPECT_EQ(pasteboard->changeCount(), count + 2);
}

TEST_F(ClipboardPasteboard, keepsAPictureThatIsEncodedSlowlyByOneEncodingThatLosesNothing) {
  LinuxPasteboard own({}, {}, kNoLastServe);
  const std::string picture = bigValue(1000000);
  CopyingApplication::Behaviour behaviour{{{"image/bmp", {"image/bmp", 8, "bmp"}},
                                           {"image/jpeg", {"image/jpeg", 8, "jpeg"}},
                                           {"text/html", {"text/html", 8, "<img>"}},
                                           {"image/png", {"image/png", 8, picture}}}};
  behaviour.slowTargets = {{"image/png", milliseconds(1200)}, {"image/bmp", milliseconds(1200)}};
  CopyingApplication application(behaviour);
  const auto kept = snapshot(own);
  EXPECT_TRUE(own.canBeGivenBack());
  ASSERT_EQ(kept.size(), 1U);
  EXPECT_EQ(kept[0], (PasteboardItemData{{"text/html", bytesOf("<img>")}, {"image/png", bytesOf(picture)}}));
  EXPECT_THAT(own.typesLeftOut(), ElementsAre("image/bmp", "image/jpeg"));
  EXPECT_THAT(application.requests(), ElementsAre("TARGETS", "text/html", "image/png"))
      << "a slow encoder is not kept busy for nothing";
}

TEST_F(ClipboardPasteboard, keepsEveryEncodingOfAPictureWhereTheyComeQuickly) {
  CopyingApplication application({{{"image/bmp", {"image/bmp", 8, "bmp"}},
                                   {"image/png", {"image/png", 8, "png"}},
                                   {"image/jpeg", {"image/jpeg", 8, "jpeg"}}}});
  const auto kept = snapshot();
  ASSERT_EQ(kept.size(), 1U);
  EXPECT_EQ(kept[0], (PasteboardItemData{{"image/bmp", bytesOf("bmp")},
                                         {"image/png", bytesOf("png")},
                                         {"image/jpeg", bytesOf("jpeg")}}));
  EXPECT_THAT(pasteboard.typesLeftOut(), IsEmpty());
}

TEST_F(ClipboardPasteboard, isNotKeptBusyByAListOfTypesWithoutEnd) {
  CopyingApplication::Behaviour behaviour = plainText("x");
  behaviour.furtherTargets = 100000;
  CopyingApplication application(behaviour);
  const int before = namesAskedFor;
  snapshot();
  EXPECT_FALSE(pasteboard.canBeGivenBack());
  EXPECT_EQ(pasteboard.string(), std::nullopt);
  EXPECT_THAT(application.requests(), ElementsAre("TARGETS", "TARGETS"));
  EXPECT_LT(namesAskedFor - before, 10) << "those of the types of properties";
}

TEST_F(ClipboardPasteboard, learnsTheNamesOfManyTypesAtOnce) {
  CopyingApplication::Behaviour behaviour = plainText("x");
  behaviour.furtherTargets = 400;
  CopyingApplication application(behaviour);
  const int before = namesAskedFor;
  EXPECT_EQ(snapshot().size(), 1U);
  EXPECT_GE(namesAskedFor - before, behaviour.furtherTargets) << "it counts them";
  EXPECT_TRUE(pasteboard.canBeGivenBack());
}

TEST(PasteboardWithoutDisplay, isEmptyAndNeverChanges) {
  unsetenv("DISPLAY");
  LinuxPasteboard pasteboard;
  EXPECT_FALSE(pasteboard.items());
  EXPECT_EQ(pasteboard.string(), std::nullopt);
  pasteboard.clearContents();
  pasteboard.setString("x");
  pasteboard.writeItems({});
  EXPECT_EQ(pasteboard.changeCount(), 0);
}

TEST(PasteboardWhoseServerDies, blocksNobody) {
  auto display = std::make_unique<VirtualDisplay>();
  LinuxPasteboard pasteboard;
  pasteboard.setString("x");
  display.reset();
  const auto start = Clock::now();
  pasteboard.setString("y");
  pasteboard.clearContents();
  EXPECT_EQ(pasteboard.string(), std::nullopt);
  pasteboard.items();
  EXPECT_LT(Clock::now() - start, kLoad * PasteboardBudget().time);
}

}  // namespace
}  // namespace lexwend::platform
