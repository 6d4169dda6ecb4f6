// SPDX-License-Identifier: MIT
// The in-memory host's own side: its clock, its controls, and what it complains of.
#include "platform/fake/fake_host.h"

#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace lexwend::platform {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

AccessibilityElementRef focusedElement(FakeHost& host) {
  auto& access = host.accessibility();
  const auto result = access.copyAttributeValue(access.createSystemWideElement(), kFocusedUIElementAttribute);
  const auto* element = std::get_if<AccessibilityElementRef>(&result.value);
  return element == nullptr ? nullptr : *element;
}

TEST(FakeClock, deferredWorkSeesTheTimeItWasDueAt) {
  FakeHost host;
  std::vector<std::int64_t> seen;
  const auto note = [&] { seen.push_back(host.runLoop().now() / 1ms); };
  host.runLoop().dispatchAfter(700ms, note);
  host.runLoop().dispatchAfter(250ms, note);
  host.runLoop().dispatchAfter(250ms, note);
  host.advance(699ms);
  EXPECT_THAT(seen, ElementsAre(250, 250));
  host.advance(1ms);
  EXPECT_THAT(seen, ElementsAre(250, 250, 700));
}

TEST(FakeClock, theSystemGoesOnWhileTheProgramSleeps) {
  FakeHost host;
  host.keyEvents().holdModifiers(kEventFlagShift);
  host.keyEvents().releaseModifiersAfter(30ms);
  host.runLoop().sleep(29ms);
  EXPECT_EQ(host.keyEvents().flagsState(EventSourceState::combinedSession), kEventFlagShift);
  host.runLoop().sleep(1ms);
  EXPECT_EQ(host.keyEvents().flagsState(EventSourceState::combinedSession), kNoEventFlags);
}

TEST(FakeClock, workThatWasOversleptRunsInTheSameTurn) {
  FakeHost host;
  std::string order;
  host.runLoop().dispatchAfter(10ms, [&] {
    order += 'a';
    host.runLoop().sleep(100ms);
  });
  host.runLoop().dispatchAfter(50ms, [&] { order += 'b'; });
  host.runLoop().dispatchAfter(200ms, [&] { order += 'c'; });
  host.advance(10ms);
  EXPECT_EQ(order, "ab");
  EXPECT_EQ(host.runLoop().now(), 110ms);
}

TEST(FakeHost, unusedPreparationsAreComplaints) {
  FakeHost host;
  host.failNext(FakeOperation::registerHotKey, -9878);
  host.alerts().answer("OK");
  const auto app = host.apps().open("Editor", std::nullopt, "text");
  app->nextCopies.push_back({FakeCopy::Kind::nothing, 0ms});
  app->focus()->answer(AccessOperation::read, kValueAttribute, FakeAnswer::noValue());
  EXPECT_THAT(host.settle(), testing::UnorderedElementsAre(HasSubstr("registerHotKey"), HasSubstr("\"OK\""),
                                                           HasSubstr("Editor was prepared for 1 copies"),
                                                           HasSubstr("read of AXValue was never asked for")));
}

TEST(FakeHost, nobodyComplainsOfAQuietHost) {
  FakeHost host;
  EXPECT_THAT(host.settle(), IsEmpty());
}

TEST(FakeHost, reportsWhatNobodyTookWhenItGoes) {
  std::vector<std::string> reported;
  const auto before =
      setComplaintHandler([&](const std::vector<std::string>& complaints) { reported = complaints; });
  { FakeHost().statusBar().choose("nowhere"); }
  setComplaintHandler(before);
  EXPECT_THAT(reported, ElementsAre(HasSubstr("no item \"nowhere\"")));
}

TEST(FakeHost, hiddenAndDisabledMenuItemsCannotBeChosen) {
  FakeHost host;
  auto& bar = host.statusBar();
  const auto item = bar.statusItem(kSquareStatusItemLength);
  const auto menu = bar.makeMenu();
  menu->setAutoenablesItems(false);
  int runs = 0;
  const auto entry = bar.makeMenuItem();
  entry->setTitle("entry");
  entry->setAction([&] { ++runs; });
  menu->addItem(entry);
  item->setMenu(menu);

  EXPECT_TRUE(bar.choose("entry"));
  entry->setHidden(true);
  EXPECT_FALSE(bar.choose("entry"));
  entry->setHidden(false);
  entry->setEnabled(false);
  EXPECT_FALSE(bar.choose("entry"));
  menu->setAutoenablesItems(true);
  EXPECT_TRUE(bar.choose("entry")) << "a menu that enables by itself looks at the action";
  EXPECT_EQ(runs, 2);
  EXPECT_THAT(host.complaints().take(), ElementsAre(HasSubstr("hidden"), HasSubstr("disabled")));
}

TEST(FakeHost, anUnansweredAlertIsAComplaintAndTakesTheLastButton) {
  FakeHost host;
  EXPECT_EQ(host.alerts().runModal({"message", "", {"one", "two"}}), kAlertFirstButtonReturn + 1);
  EXPECT_THAT(host.settle(), ElementsAre(HasSubstr("no answer prepared")));
}

TEST(FakeHost, timePassesWhileAnAlertIsOpen) {
  FakeHost host;
  int ticks = 0;
  const auto timer = host.runLoop().scheduledRepeatingTimer(100ms, [&] { ++ticks; });
  host.alerts().answer("OK", [&] {
    EXPECT_TRUE(host.alerts().open());
    host.advance(350ms);
  });
  host.alerts().runModal({"message", "", {"OK"}});
  EXPECT_EQ(ticks, 3);
  EXPECT_FALSE(host.alerts().open());
}

TEST(FakeHost, anAnswerThatTheAlertDoesNotOfferIsAComplaint) {
  FakeHost host;
  host.alerts().answer("Maybe");
  host.alerts().runModal({"message", "", {"OK"}});
  EXPECT_THAT(host.settle(), ElementsAre(HasSubstr("no button \"Maybe\"")));
}

TEST(FakeHost, aFailureMayWaitForLaterCalls) {
  FakeHost host;
  host.failNext(FakeOperation::symbolImage, {.times = 2, .after = 1});
  EXPECT_NE(host.statusBar().symbolImage("xmark", "x"), nullptr);
  EXPECT_EQ(host.statusBar().symbolImage("xmark", "x"), nullptr);
  EXPECT_EQ(host.statusBar().symbolImage("xmark", "x"), nullptr);
  EXPECT_NE(host.statusBar().symbolImage("xmark", "x"), nullptr);
}

TEST(FakeHost, theApplicationLaunchesThenRunsItsLoopThenReturns) {
  FakeHost host;
  std::string order;
  host.application().setDelegate([&] { order += "launched "; });
  host.application().whileRunning = [&] { order += host.application().running() ? "running" : "?"; };
  host.application().run();
  EXPECT_EQ(order, "launched running");
  EXPECT_FALSE(host.application().running());
}

TEST(FakeHost, theUserTypesByTheLayoutInUseUnlessSomebodyHoldsTheKey) {
  FakeHost host;
  const auto editor = host.apps().open("Editor", std::nullopt);
  EXPECT_EQ(host.userPresses(kKeyA), KeyFate::application);
  EXPECT_EQ(host.userPresses(kKeyA, kShiftKey), KeyFate::application);
  host.inputSourceService().use("com.apple.keylayout.Hebrew");
  host.userPresses(kKeyA);
  EXPECT_EQ(editor->focus()->text(), "aAש");
  host.hotKeyService().otherAppTakes(kKeyA, kNoModifiers);
  EXPECT_EQ(host.userPresses(kKeyA), KeyFate::othersHotKey);
  EXPECT_EQ(editor->focus()->text(), "aAש");
}

TEST(FakePasteboard, severalItemsKeepTheirTypesAndBytes) {
  FakeHost host;
  auto& pasteboard = host.pasteboard();
  pasteboard.clearContents();
  pasteboard.writeItems({{{"a", bytesOf("1")}, {"b", bytesOf("2")}}, {{"c", bytesOf("3")}}});
  const auto items = pasteboard.items();
  ASSERT_EQ(items->size(), 2U);
  EXPECT_THAT((*items)[0]->types(), ElementsAre("a", "b"));
  EXPECT_EQ((*items)[1]->data("c"), bytesOf("3"));
}

TEST(FakePasteboard, anItemReadBeforeAChangeIsStale) {
  FakeHost host;
  host.pasteboard().otherAppCopies("old");
  const auto items = host.pasteboard().items();
  host.pasteboard().otherAppCopies("new");
  EXPECT_EQ(items->front()->data(std::string(kPlainTextType)), std::nullopt);
  EXPECT_THAT(items->front()->types(), IsEmpty());
}

TEST(FakePasteboard, writingWithoutClearingIsAComplaint) {
  FakeHost host;
  host.pasteboard().setString("text");
  host.pasteboard().writeItems({});
  EXPECT_EQ(host.settle().size(), 2U);
}

TEST(FakePasteboard, promisedDataTakesItsTimeAndMayNotCome) {
  FakeHost host;
  host.pasteboard().otherAppWrites(
      {{{"slow", bytesOf("x"), 40ms}, FakePasteboardEntry::brokenPromise("never")}});
  const auto items = host.pasteboard().items();
  EXPECT_EQ(items->front()->data("slow"), bytesOf("x"));
  EXPECT_EQ(host.runLoop().now(), 40ms);
  EXPECT_EQ(items->front()->data("never"), std::nullopt);
}

TEST(FakeApps, aCopyLandsAfterItsDelayAndAPasteReadsWhatIsThereThen) {
  FakeHost host;
  const auto editor = host.apps().open("Editor", std::nullopt, "one two");
  editor->focus()->select("two");
  editor->copies.delay = 20ms;
  editor->pastes.delay = 20ms;
  host.userPresses(kKeyC, kCmdKey);
  EXPECT_EQ(host.pasteboard().plainText(), std::nullopt);
  host.advance(20ms);
  EXPECT_EQ(host.pasteboard().plainText(), "two");
  EXPECT_EQ(host.pasteboard().owner(), "Editor");
  host.userPresses(kKeyV, kCmdKey);
  host.pasteboard().otherAppCopies("2");
  host.advance(20ms);
  EXPECT_EQ(editor->focus()->text(), "one 2");
}

TEST(FakeApps, aCopiedPictureIsNoText) {
  FakeHost host;
  host.apps().open("Viewer", std::nullopt, "")->copies.kind = FakeCopy::Kind::image;
  host.userPresses(kKeyC, kCmdKey);
  ASSERT_EQ(host.pasteboard().contents().size(), 1U);
  ASSERT_EQ(host.pasteboard().contents()[0].size(), 1U);
  EXPECT_EQ(host.pasteboard().contents()[0][0].type, "public.png");
  EXPECT_EQ(host.pasteboard().contents()[0][0].bytes, bytesOf("\x89PNG"));
}

TEST(FakeApps, aPasswordFieldIsSecureAndGivesNothingToCopy) {
  FakeHost host;
  const auto field = host.apps().open("Login", std::nullopt, "secret")->focus();
  field->password = true;
  field->selectAll();
  host.userPresses(kKeyC, kCmdKey);
  EXPECT_TRUE(host.secureInput().isSecureEventInputEnabled());
  EXPECT_THAT(host.pasteboard().contents(), IsEmpty());
}

TEST(FakeAccessibility, elementsRefuseLieHangAndFail) {
  FakeHost host;
  const auto field = host.apps().open("Editor", std::nullopt, "text")->focus();
  field->selectAll();
  field->answer(AccessOperation::write, kSelectedTextAttribute, FakeAnswer::lies());
  field->answer(AccessOperation::settable, kSelectedTextAttribute, FakeAnswer::refuses());
  field->answer(AccessOperation::read, kValueAttribute, FakeAnswer::hangs(6000ms), 1);
  auto& access = host.accessibility();
  const auto element = focusedElement(host);
  EXPECT_EQ(access.setAttributeValue(element, kSelectedTextAttribute, "x"), 0);
  EXPECT_EQ(field->text(), "text");
  EXPECT_FALSE(access.isAttributeSettable(element, kSelectedTextAttribute).settable);
  EXPECT_EQ(access.copyAttributeValue(element, kValueAttribute).error, 0);
  EXPECT_EQ(access.copyAttributeValue(element, kValueAttribute).error, kAccessibilityCannotComplete);
  EXPECT_EQ(host.runLoop().now(), 6000ms);
}

TEST(FakeAccessibility, nothingWorksWithoutTrust) {
  FakeHost host;
  host.apps().open("Editor", std::nullopt, "text");
  host.accessibility().setTrusted(false);
  EXPECT_EQ(focusedElement(host), nullptr);
  EXPECT_FALSE(host.accessibility().isProcessTrustedWithPrompt());
  EXPECT_EQ(host.accessibility().prompts(), 1);
}

TEST(FakeInputSources, filtersByTypeAndByEnabling) {
  FakeHost host;
  auto disabled = britishLayout();
  disabled.enabled = false;
  auto palette = russianLayout();
  palette.isKeyboardLayout = false;
  auto& sources = host.inputSourceService();
  sources.setLayouts({usLayout(), disabled, palette});
  EXPECT_EQ(sources.createInputSourceList({InputSourceType::keyboardLayout, true}, false)->size(), 1U);
  EXPECT_EQ(sources.createInputSourceList({std::nullopt, true}, false)->size(), 2U);
  EXPECT_EQ(sources.createInputSourceList({}, true)->size(), 3U);
}

TEST(FakeInputSources, aDeadKeyTypesNothingAndMarksTheNextKey) {
  FakeHost host;
  auto layout = usLayout();
  layout.deadKeys.insert({50, false});
  host.inputSourceService().setLayouts({layout});
  auto& sources = host.inputSourceService();
  const auto value = sources.property(sources.copyCurrentKeyboardLayoutInputSource(),
                                      InputSourceProperty::unicodeKeyLayoutData);
  const auto data = std::get<KeyLayoutDataRef>(value);
  std::uint32_t state = 0;
  EXPECT_EQ(sources.translate(*data, {KeyCode{50}, KeyAction::down, kNoModifiers, 40, 0, 8}, state), u"");
  EXPECT_NE(state, 0U);
  EXPECT_EQ(sources.translate(*data, {kKeyA, KeyAction::down, kNoModifiers, 40, 0, 8}, state), u"`a");
  EXPECT_EQ(state, 0U);
}

TEST(FakeHotKeys, aFailedParameterReadLeavesTheIdentityAlone) {
  FakeHost host;
  HotKeyID read{7, 7};
  host.hotKeyService().installHandler([&](const HotKeyEvent& event) { return event.hotKeyID(read); });
  const auto hotKey = host.hotKeyService().registerHotKey(kKeyF2, kNoModifiers, {1, 2});
  host.failNext(FakeOperation::readHotKeyParameter, -9870);
  EXPECT_TRUE(host.hotKeyService().press(kKeyF2, kNoModifiers));
  EXPECT_EQ(read, (HotKeyID{7, 7}));
  host.hotKeyService().press(kKeyF2, kNoModifiers);
  EXPECT_EQ(read, (HotKeyID{1, 2}));
}

TEST(FakeFiles, missingFoldersAndReadOnlyFilesRefuse) {
  FakeHost host;
  auto& files = host.files();
  EXPECT_TRUE(files.writeWholeFile(files.home + "/Library/Logs/x", "1"));
  files.setReadOnly(files.home + "/Library/Logs/x", true);
  EXPECT_EQ(files.fileHandleForWriting(files.home + "/Library/Logs/x"), nullptr);
  EXPECT_FALSE(files.writeWholeFile(files.home + "/Library/Logs/x", "2"));
  files.removeFolder(files.home + "/Library/Logs");
  EXPECT_FALSE(files.writeWholeFile(files.home + "/Library/Logs/y", "1"));
  EXPECT_EQ(files.fileCount(), 0U);
}

TEST(FakeDateFormatters, followTheClockAndComplainOfUnknownLetters) {
  FakeHost host;
  auto& formatter = host.dateFormatters().withPattern("yyyy-MM-dd HH:mm:ss.SSS");
  EXPECT_EQ(formatter.stringFromNow(), "2024-03-05 14:07:09.042");
  host.advance(24h);
  EXPECT_EQ(formatter.stringFromNow(), "2024-03-06 14:07:09.042");
  host.dateFormatters().setLocalTime(std::chrono::sys_days(std::chrono::year(1999) / 12 / 31) + 999ms);
  EXPECT_EQ(formatter.stringFromNow(), "1999-12-31 00:00:00.999");
  host.dateFormatters().withPattern("EEE").stringFromNow();
  EXPECT_THAT(host.settle(), testing::Contains(HasSubstr("pattern letter")));
}

TEST(FakeHost, theCallLogShowsTheOrderOfCalls) {
  FakeHost host;
  HostScope scope(host);
  host.generalPasteboard()->clearContents();
  host.generalPasteboard()->setString("secret");
  host.runLoop().sleep(30ms);
  EXPECT_THAT(host.calls().all(),
              ElementsAre("pasteboard.clearContents", "pasteboard.setString", "runLoop.sleep 30000us"));
}

TEST(FakeHost, aProcessThatEndsLeavesNothingOfItsOwnBehind) {
  FakeHost host;
  int calls = 0;
  host.hotKeyService().installHandler([&](const HotKeyEvent&) {
    ++calls;
    return kNoErr;
  });
  const auto hotKey = host.hotKeyService().registerHotKey(kKeyF2, kNoModifiers, {1, 1});
  const auto wakes = host.workspace().observeDidWake([&] { ++calls; });
  const auto layouts = host.inputSourceService().observeEnabledLayoutsChanged([&] { ++calls; });
  host.runLoop().dispatchAfter(10ms, [&] { ++calls; });
  const auto timer = host.runLoop().scheduledRepeatingTimer(10ms, [&] { ++calls; });
  host.pasteboard().otherAppCopies("kept");
  host.processEnds();
  host.userPresses(kKeyF2);
  host.workspace().wake();
  host.inputSourceService().changeLayouts({usLayout()});
  host.advance(100ms);
  EXPECT_EQ(calls, 0);
  EXPECT_EQ(host.runLoop().liveTimers(), 0U);
  EXPECT_EQ(host.pasteboard().plainText(), "kept");
}

}  // namespace
}  // namespace lexwend::platform
