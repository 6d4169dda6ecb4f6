// SPDX-License-Identifier: MIT
// The fix itself: from the hot key or the menu to the outcome on the icon.

#include <algorithm>
#include <chrono>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/app/agent.h"
#include "tests/call_order.h"

namespace lexwend::tests {
namespace {

using platform::FakeOperation;
using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kUs = "com.apple.keylayout.US";
constexpr const char* kHebrew = "com.apple.keylayout.Hebrew";

/// A launched agent whose icon history starts empty.
struct Fix : Agent {
  void launch() {
    Agent::launch();
    host.statusBar().item()->icons.clear();
    host.calls().clear();
  }
  std::vector<std::string> icons() { return host.statusBar().item()->icons; }
  /// What the program asked of the system once its last line was in the log.
  std::vector<std::string> afterTheLastLine() {
    const auto& calls = host.calls().all();
    return {std::find(calls.rbegin(), calls.rend(), "file.close").base(), calls.end()};
  }
  void pressHotKey() { EXPECT_EQ(host.userPresses(kF2), platform::KeyFate::ownHotKey); }
};

TEST(Fix, turnsLatinIntoHebrewSwitchesTheLayoutAndShowsACheckMark) {
  Fix f;
  f.launch();
  const auto editor = f.openEditor("akuo nv akunl");
  f.pressHotKey();
  EXPECT_EQ(editor->focus()->text(), "שלום מה שלומך");
  EXPECT_EQ(f.host.inputSourceService().currentId(), kHebrew);
  EXPECT_THAT(f.fixLines(),
              ElementsAre("fix: front=com.example.editor currentHebrew=false", "fix: success target=he"));
  EXPECT_EQ(f.icon(), "checkmark");
  EXPECT_EQ(f.host.application().beeps, 0);
}

TEST(Fix, turnsHebrewIntoLatinAndSwitchesBack) {
  Fix f;
  f.host.inputSourceService().use(kHebrew);
  f.launch();
  const auto editor = f.openEditor("יקךךם");
  f.pressHotKey();
  EXPECT_EQ(editor->focus()->text(), "hello");
  EXPECT_EQ(f.host.inputSourceService().currentId(), kUs);
  EXPECT_THAT(f.fixLines(),
              ElementsAre("fix: front=com.example.editor currentHebrew=true", "fix: success target=en"));
}

TEST(Fix, goesThroughTheStepsInOrder) {
  Fix f;
  f.launch();
  f.openEditor("akuo");
  f.pressHotKey();
  EXPECT_TRUE(inOrder(f.host.calls(),
                      {"inputSources.copyCurrentKeyboardLayoutInputSource", "workspace.frontmostApplication",
                       "secureInput.isSecureEventInputEnabled", "inputSources.select"}));
  EXPECT_THAT(f.afterTheLastLine(),
              ElementsAre("statusItem.setImage checkmark", "runLoop.dispatchAfter 700ms"));
  EXPECT_EQ(f.lastLogLine(), "fix: success target=he");
}

TEST(Fix, sameInputConvertsByTheLayoutInUse) {
  for (const auto& [layout, expected] : {std::pair{kUs, "היי שלום מה"}, std::pair{kHebrew, "vhh akuo nv"}}) {
    Fix f;
    f.host.inputSourceService().use(layout);
    f.launch();
    const auto editor = f.openEditor("היי akuo nv");
    f.pressHotKey();
    EXPECT_EQ(editor->focus()->text(), expected);
  }
}

TEST(Fix, layoutThatListsHebrewAmongOthersCountsAsHebrew) {
  Fix f;
  auto yiddish = platform::hebrewLayout();
  yiddish.id = "com.apple.keylayout.Yiddish-QWERTY";
  yiddish.languages = std::vector<std::string>{"yi", "he"};
  f.host.inputSourceService().setLayouts({platform::usLayout(), yiddish});
  f.host.inputSourceService().use("com.apple.keylayout.Yiddish-QWERTY");
  f.launch();
  f.openEditor("יקךךם");
  f.pressHotKey();
  EXPECT_EQ(f.fixLines().front(), "fix: front=com.example.editor currentHebrew=true");
}

TEST(Fix, onlyTheExactCodeCountsAsHebrew) {
  Fix f;
  auto other = platform::hebrewLayout();
  other.languages = std::vector<std::string>{"HE", "he-IL", "iw"};
  f.host.inputSourceService().setLayouts({platform::usLayout(), other});
  f.host.inputSourceService().use(kHebrew);
  f.launch();
  f.openEditor("akuo");
  f.pressHotKey();
  EXPECT_EQ(f.fixLines().front(), "fix: front=com.example.editor currentHebrew=false");
}

TEST(Fix, noLayoutInUseCountsAsNotHebrew) {
  Fix f;
  f.launch();
  f.host.inputSourceService().useNone();
  f.openEditor("akuo");
  f.pressHotKey();
  EXPECT_THAT(f.fixLines(),
              ElementsAre("fix: front=com.example.editor currentHebrew=false", "fix: success target=he"));
}

TEST(Fix, noFrontApplicationIsAQuestionMark) {
  Fix f;
  f.launch();
  f.pressHotKey();
  EXPECT_EQ(f.fixLines().front(), "fix: front=? currentHebrew=false");
}

TEST(Fix, frontApplicationWithoutAnIdentifierIsAQuestionMark) {
  Fix f;
  f.launch();
  f.host.apps().open("Tool", std::nullopt, "akuo")->focus()->selectAll();
  f.pressHotKey();
  EXPECT_EQ(f.fixLines().front(), "fix: front=? currentHebrew=false");
}

TEST(Fix, emptyIdentifierIsWrittenAsItIs) {
  Fix f;
  f.launch();
  f.host.apps().open("Tool", "", "akuo")->focus()->selectAll();
  f.pressHotKey();
  EXPECT_EQ(f.fixLines().front(), "fix: front= currentHebrew=false");
}

TEST(Fix, leavesTheLayoutWhenSwitchingIsOff) {
  Fix f;
  f.host.standardUserDefaults().put("switchLayoutAfterFix", false);
  f.launch();
  const auto editor = f.openEditor("akuo");
  f.pressHotKey();
  EXPECT_EQ(editor->focus()->text(), "שלום");
  EXPECT_THAT(f.host.inputSourceService().selections(), IsEmpty());
  EXPECT_EQ(f.lastLogLine(), "fix: success target=he");
  EXPECT_EQ(f.icon(), "checkmark");
}

TEST(Fix, succeedsWithoutALayoutToSwitchTo) {
  Fix f;
  f.host.inputSourceService().setLayouts({platform::usLayout()});
  f.launch();
  const auto editor = f.openEditor("akuo");
  f.pressHotKey();
  EXPECT_EQ(editor->focus()->text(), "שלום");
  EXPECT_THAT(f.host.inputSourceService().selections(), IsEmpty());
  EXPECT_EQ(f.lastLogLine(), "fix: success target=he");
  EXPECT_EQ(f.icon(), "checkmark");
}

TEST(Fix, saysNothingOfALayoutThatCannotBeSelected) {
  Fix f;
  f.launch();
  const auto editor = f.openEditor("akuo");
  f.host.failNext(FakeOperation::selectInputSource);
  f.pressHotKey();
  EXPECT_EQ(editor->focus()->text(), "שלום");
  EXPECT_THAT(f.host.inputSourceService().selections(), ElementsAre(kHebrew));
  EXPECT_EQ(f.host.inputSourceService().currentId(), kUs);
  EXPECT_THAT(f.fixLines(),
              ElementsAre("fix: front=com.example.editor currentHebrew=false", "fix: success target=he"));
  EXPECT_THAT(f.icons(), ElementsAre("checkmark"));
  EXPECT_EQ(f.host.application().beeps, 0);
  EXPECT_THAT(f.host.alerts().shown(), IsEmpty());
}

TEST(Fix, selectsTheLayoutOfTheTargetEvenWhenItIsInUse) {
  Fix f;
  f.host.inputSourceService().use(kHebrew);
  f.launch();
  f.openEditor("akuo");
  f.pressHotKey();
  EXPECT_THAT(f.host.inputSourceService().selections(), ElementsAre(kHebrew));
  EXPECT_EQ(f.lastLogLine(), "fix: success target=he");
}

TEST(Fix, nothingToChangeBeepsAndShowsACross) {
  Fix f;
  f.launch();
  const auto editor = f.openEditor("123");
  f.pressHotKey();
  EXPECT_EQ(editor->focus()->text(), "123");
  EXPECT_THAT(f.fixLines(), ElementsAre("fix: front=com.example.editor currentHebrew=false",
                                        "fix: failed nothingToChange"));
  EXPECT_EQ(f.host.application().beeps, 1);
  EXPECT_EQ(f.icon(), "xmark");
  EXPECT_THAT(f.host.inputSourceService().selections(), IsEmpty());
}

TEST(Fix, noSelectionBeepsAndShowsACross) {
  Fix f;
  f.launch();
  f.host.apps().open("Editor", "com.example.editor", "akuo");
  f.pressHotKey();
  EXPECT_EQ(f.lastLogLine(), "fix: failed noSelection");
  EXPECT_EQ(f.host.application().beeps, 1);
  EXPECT_EQ(f.icon(), "xmark");
  EXPECT_THAT(f.host.alerts().shown(), IsEmpty());
}

TEST(Fix, secureInputBeepsAndShowsACross) {
  Fix f;
  f.launch();
  const auto editor = f.openEditor("akuo");
  f.host.secureInput().hold(true);
  f.pressHotKey();
  EXPECT_EQ(editor->focus()->text(), "akuo");
  EXPECT_EQ(f.lastLogLine(), "fix: failed secureInput");
  EXPECT_EQ(f.host.application().beeps, 1);
  EXPECT_EQ(f.icon(), "xmark");
}

TEST(Fix, failureIsInTheLogThenBeepsThenShowsTheCross) {
  Fix f;
  f.launch();
  f.openEditor("123");
  f.pressHotKey();
  EXPECT_EQ(f.lastLogLine(), "fix: failed nothingToChange");
  EXPECT_THAT(f.afterTheLastLine(),
              ElementsAre("application.beep", "statusItem.setImage xmark", "runLoop.dispatchAfter 700ms"));
}

TEST(Fix, missingPermissionPromptsAndExplainsWithoutBeepOrIcon) {
  Fix f;
  f.launch();
  const auto editor = f.openEditor("akuo");
  f.host.accessibility().setTrusted(false);
  f.host.alerts().answer("ביטול");
  f.pressHotKey();
  EXPECT_EQ(editor->focus()->text(), "akuo");
  EXPECT_THAT(f.fixLines(),
              ElementsAre("fix: front=com.example.editor currentHebrew=false", "fix: no permission"));
  EXPECT_EQ(f.host.accessibility().prompts(), 1);
  EXPECT_THAT(f.afterTheLastLine(), ElementsAre("accessibility.isProcessTrustedWithPrompt",
                                                "application.activate true", "alerts.runModal"));
  EXPECT_EQ(f.host.alerts().shown().size(), 1U);
  EXPECT_EQ(f.host.application().beeps, 0);
  EXPECT_THAT(f.icons(), IsEmpty());
  EXPECT_EQ(f.host.runLoop().pendingWork(), 0U);
}

TEST(Fix, theDirectionOfTheLastConversionCounts) {
  // The Accessibility path converts what it read, towards English, and cannot write it; the clipboard path
  // then copies another text, which goes to Hebrew.
  Fix f;
  f.launch();
  const auto editor = f.openEditor("akuo");
  editor->focus()->answer(platform::AccessOperation::read, platform::kSelectedTextAttribute,
                          platform::FakeAnswer::text("יקךךם"));
  editor->focus()->answer(platform::AccessOperation::write, platform::kSelectedTextAttribute,
                          platform::FakeAnswer::fails(platform::kAccessibilityCannotComplete));
  f.pressHotKey();
  EXPECT_EQ(editor->focus()->text(), "שלום");
  EXPECT_THAT(f.host.inputSourceService().selections(), ElementsAre(kHebrew));
  EXPECT_EQ(f.lastLogLine(), "fix: success target=he");
}

TEST(Fix, compatibilityModeGoesThroughTheClipboard) {
  Fix f;
  f.host.standardUserDefaults().put("compatMode", true);
  f.launch();
  const auto editor = f.openEditor("akuo");
  f.pressHotKey();
  EXPECT_EQ(editor->focus()->text(), "שלום");
  EXPECT_EQ(f.host.accessibility().elementCalls(), 0);
  EXPECT_EQ(f.lastLogLine(), "fix: success target=he");
}

TEST(Fix, logHoldsNoWordOfTheUser) {
  for (const bool compat : {false, true}) {
    Fix f;
    f.host.standardUserDefaults().put("compatMode", compat);
    f.launch();
    f.openEditor("akuo");
    f.pressHotKey();
    EXPECT_EQ(f.lastLogLine(), "fix: success target=he");
    EXPECT_EQ(f.host.logFile().find("akuo"), std::string::npos);
    EXPECT_EQ(f.host.logFile().find("שלום"), std::string::npos);
  }
}

TEST(Fix, usesTheMapOfTheLayoutsAsTheyAreNow) {
  Fix f;
  f.host.inputSourceService().setLayouts({platform::usLayout()});
  f.launch();
  auto hebrew = platform::hebrewLayout();
  hebrew.keys[0].plain = "ת";  // on the key of the a
  f.host.inputSourceService().changeLayouts({platform::usLayout(), hebrew});
  const auto editor = f.openEditor("a");
  f.pressHotKey();
  EXPECT_EQ(editor->focus()->text(), "ת");
}

// The icon's moment.

TEST(Flash, showsATemplateSymbolNamedAfterTheApplication) {
  Fix f;
  f.launch();
  f.openEditor("akuo");
  f.pressHotKey();
  const auto image = f.host.statusBar().item()->image;
  ASSERT_NE(image, nullptr);
  EXPECT_TRUE(image->isTemplate);
  EXPECT_EQ(image->accessibilityDescription, "Lexwend");
}

TEST(Flash, endsAfter700MillisecondsWithARefresh) {
  Fix f;
  f.launch();
  f.openEditor("123");
  f.pressHotKey();
  f.host.advance(milliseconds(699));
  EXPECT_EQ(f.icon(), "xmark");
  f.host.loginItem().setStatus(platform::LoginItemStatus::requiresApproval);
  f.host.advance(milliseconds(1));
  EXPECT_EQ(f.icon(), "keyboard");
  EXPECT_FALSE(f.loginItem().checked);  // the whole menu state, not the icon alone
}

TEST(Flash, endsInTheWaitingIconWhenThePermissionWentMeanwhile) {
  Fix f;
  f.launch();
  f.openEditor("akuo");
  f.pressHotKey();
  f.host.accessibility().setTrusted(false);
  f.host.advance(milliseconds(700));
  EXPECT_EQ(f.icon(), "keyboard.badge.ellipsis");
}

TEST(Flash, firstResetMayEndTheSecondFlashEarly) {
  Fix f;
  f.launch();
  f.openEditor("123");
  f.pressHotKey();
  f.host.advance(milliseconds(400));
  f.pressHotKey();
  f.host.advance(milliseconds(300));
  EXPECT_EQ(f.icon(), "keyboard");
  f.host.advance(milliseconds(400));
  EXPECT_THAT(f.icons(), ElementsAre("xmark", "xmark", "keyboard", "keyboard"));
}

TEST(Flash, laterFlashReplacesTheEarlierIcon) {
  Fix f;
  f.launch();
  const auto editor = f.openEditor("akuo");
  f.pressHotKey();
  editor->focus()->setText("123");
  editor->focus()->selectAll();
  f.pressHotKey();
  EXPECT_THAT(f.icons(), ElementsAre("checkmark", "xmark"));
}

TEST(Flash, missingSymbolClearsTheIconUntilTheReset) {
  Fix f;
  f.launch();
  f.openEditor("akuo");
  f.host.failNext(FakeOperation::symbolImage);
  f.pressHotKey();
  EXPECT_EQ(f.host.statusBar().item()->image, nullptr);
  f.host.advance(milliseconds(700));
  EXPECT_EQ(f.icon(), "keyboard");
}

// From the menu.

TEST(FixFromMenu, startsAQuarterOfASecondLater) {
  Fix f;
  f.launch();
  const auto editor = f.openEditor("akuo");
  f.chooseFix();
  EXPECT_THAT(f.host.calls().all(), ElementsAre("runLoop.dispatchAfter 250ms"));
  f.host.advance(milliseconds(249));
  EXPECT_EQ(editor->focus()->text(), "akuo");
  EXPECT_THAT(f.fixLines(), IsEmpty());
  f.host.advance(milliseconds(1));
  EXPECT_EQ(editor->focus()->text(), "שלום");
  EXPECT_EQ(f.icon(), "checkmark");
}

TEST(FixFromMenu, fixesWhateverIsInFrontByThen) {
  Fix f;
  f.launch();
  const auto first = f.openEditor("akuo");
  f.chooseFix();
  const auto second = f.openEditor("nv");
  f.host.advance(milliseconds(250));
  EXPECT_EQ(first->focus()->text(), "akuo");
  EXPECT_EQ(second->focus()->text(), "מה");
}

/// The user presses the hot key again and again while the fix is waiting for the application.
void expectOneFixFor(Fix& f, const std::function<void()>& start) {
  f.host.standardUserDefaults().setBool(true, "compatMode");  // the path that waits
  const auto editor = f.openEditor("akuo");
  editor->copies.delay = milliseconds(200);
  for (int i = 1; i <= 10; ++i) {
    f.host.clock().systemDoes(milliseconds(15 * i), [&f] { f.pressHotKey(); });
  }
  start();
  f.host.advance(milliseconds(2000));
  EXPECT_EQ(editor->focus()->text(), "שלום");
  EXPECT_THAT(f.fixLines(),
              ElementsAre("fix: front=com.example.editor currentHebrew=false", "fix: success target=he"));
}

TEST(FixFromHotKey, dropsThePressesThatAreMadeMeanwhile) {
  Fix f;
  f.launch();
  expectOneFixFor(f, [&f] { f.pressHotKey(); });
}

TEST(FixFromMenu, dropsThePressesThatAreMadeMeanwhile) {
  Fix f;
  f.launch();
  expectOneFixFor(f, [&f] { f.delegate->performFix(); });
}

TEST(FixFromHotKey, hasNoDelay) {
  Fix f;
  f.launch();
  const auto editor = f.openEditor("akuo");
  const auto before = f.host.clock().now();
  f.pressHotKey();
  EXPECT_EQ(editor->focus()->text(), "שלום");
  EXPECT_EQ(f.host.clock().now(), before);
}

}  // namespace
}  // namespace lexwend::tests
