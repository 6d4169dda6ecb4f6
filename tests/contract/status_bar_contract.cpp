// SPDX-License-Identifier: MIT
#include "platform/application.h"
#include "platform/run_loop.h"
#include "platform/status_item.h"
#include "tests/contract/contract_test.h"

namespace lexwend::contract {
namespace {

class StatusBarContract : public ContractTest {
 protected:
  StatusBarContract() {
    menu->setAutoenablesItems(false);
    first->setTitle("ראשון");
    first->setAction([this] { ++chosen; });
    second->setTitle("second");
    second->setEnabled(false);
    menu->addItem(first);
    menu->addSeparator();
    menu->addItem(second);
    item->setImage(bar().symbolImage("keyboard", "Lexwend"));
    item->setMenu(menu);
  }
  platform::StatusBar& bar() { return host().statusBar(); }
  bool menuIs(const std::vector<std::string>& titles) {
    return underTest->waitUntil([&] { return underTest->visibleMenu() == titles; });
  }

  int chosen = 0;
  platform::MenuItemRef first = bar().makeMenuItem();
  platform::MenuItemRef second = bar().makeMenuItem();
  platform::MenuRef menu = bar().makeMenu();
  platform::StatusItemRef item = bar().statusItem(platform::kSquareStatusItemLength);
};

TEST_F(StatusBarContract, theMenuShowsItsEntriesInOrder) {
  EXPECT_TRUE(menuIs({"ראשון", "---", "second"}));
}

TEST_F(StatusBarContract, choosingAnEntryRunsItsAction) {
  ASSERT_TRUE(menuIs({"ראשון", "---", "second"}));
  EXPECT_TRUE(underTest->chooseMenuEntry("ראשון"));
  EXPECT_TRUE(underTest->waitUntil([&] { return chosen == 1; }));
}

TEST_F(StatusBarContract, anEntryMayEndTheApplication) {
  second->setEnabled(true);
  second->setTerminatesApplication();
  bool isChosen = false;
  host().application().setDelegate(
      [&] { host().runLoop().dispatchAfter(1ms, [&] { isChosen = underTest->chooseMenuEntry("second"); }); });
  host().application().run();
  EXPECT_TRUE(isChosen);
}

TEST_F(StatusBarContract, anActionMayEndTheApplication) {
  first->setAction([this] {
    ++chosen;
    host().application().terminate();
  });
  host().application().setDelegate(
      [&] { host().runLoop().dispatchAfter(1ms, [&] { underTest->chooseMenuEntry("ראשון"); }); });
  host().application().run();
  EXPECT_EQ(chosen, 1);
}

TEST_F(StatusBarContract, aDisabledEntryIsSeenAndCannotBeChosen) {
  bool ran = false;
  second->setAction([&] { ran = true; });
  EXPECT_FALSE(underTest->chooseMenuEntry("second"));
  underTest->waitUntil([] { return false; }, 50ms);
  EXPECT_FALSE(ran);
  second->setEnabled(true);
  EXPECT_TRUE(underTest->waitUntil([&] { return underTest->chooseMenuEntry("second"); }));
  EXPECT_TRUE(underTest->waitUntil([&] { return ran; }));
}

TEST_F(StatusBarContract, aHiddenEntryIsNotSeenUntilItIsShownAgain) {
  first->setHidden(true);
  EXPECT_TRUE(underTest->waitUntil([&] {
    const auto titles = underTest->visibleMenu();
    return !titles.empty() && titles.back() == "second" && titles.front() != "ראשון";
  }));
  first->setHidden(false);
  EXPECT_TRUE(menuIs({"ראשון", "---", "second"}));
}

TEST_F(StatusBarContract, aTitleCanChangeAtAnyTimeAndKeepsItsBlanks) {
  first->setTitle("תקן טקסט מסומן    F2");
  EXPECT_TRUE(menuIs({"תקן טקסט מסומן    F2", "---", "second"}));
}

TEST_F(StatusBarContract, theCheckMarkComesAndGoes) {
  first->setChecked(true);
  EXPECT_TRUE(menuIs({"✓ ראשון", "---", "second"}));
  first->setChecked(false);
  EXPECT_TRUE(menuIs({"ראשון", "---", "second"}));
}

/// That the key then works is shown where the host sees to it itself, in
/// tests/linux/tray/status_item_test.cpp.
TEST_F(StatusBarContract, theKeyEquivalentIsShownUntilItIsTakenAway) {
  second->setKeyEquivalent("q");
  EXPECT_TRUE(menuIs({"ראשון", "---", "second ⌘q"}));
  second->setKeyEquivalent("");
  EXPECT_TRUE(menuIs({"ראשון", "---", "second"}));
}

TEST_F(StatusBarContract, theItemGoesWithItsLastReference) {
  platform::StatusItemRef other = item;
  EXPECT_TRUE(underTest->waitUntil([&] { return underTest->statusItemIsShown(); }));
  item.reset();
  EXPECT_TRUE(underTest->statusItemIsShown());
  other.reset();
  EXPECT_TRUE(underTest->waitUntil([&] { return !underTest->statusItemIsShown(); }));
}

TEST_F(StatusBarContract, theFourSymbolsExistAndOthersDoNot) {
  for (const auto* name : {"keyboard", "keyboard.badge.ellipsis", "checkmark", "xmark"}) {
    EXPECT_NE(bar().symbolImage(name, "Lexwend"), nullptr) << name;
  }
  EXPECT_EQ(bar().symbolImage("lexwend.nowhere", "Lexwend"), nullptr);
}

TEST_F(StatusBarContract, theImageCanBeClearedAndReplaced) {
  item->setImage(nullptr);
  item->setImage(bar().symbolImage("xmark", "Lexwend"));
  EXPECT_TRUE(menuIs({"ראשון", "---", "second"})) << "the menu does not depend on the image";
}

}  // namespace
}  // namespace lexwend::contract
