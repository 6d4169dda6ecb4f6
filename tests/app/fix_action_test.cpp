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

using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;

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

TEST(Fix, emptyIdentifierIsWrittenAsItIs) {
  Fix f;
  f.launch();
  f.host.apps().open("Tool", "", "akuo")->focus()->selectAll();
  f.pressHotKey();
  EXPECT_EQ(f.fixLines().front(), "fix: front= currentHebrew=false");
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

// From the menu.

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

}  // namespace
}  // namespace lexwend::tests
