// SPDX-License-Identifier: MIT
#include <stdexcept>

#include "tests/mac/host_fixture.h"

namespace lexwend::platform::mac {
namespace {

namespace dbl = doubles::status_bar;

struct MacStatusBarService : InMacApplication {
  StatusBar& service = host->statusBar();
  StatusItemRef item;
  MenuRef menu;

  void TearDown() override {
    item = nullptr;
    menu = nullptr;
    OnMac::TearDown();
  }
  void showMenu(const std::vector<MenuItemRef>& entries) {
    item = service.statusItem(kSquareStatusItemLength);
    menu = service.makeMenu();
    menu->setAutoenablesItems(false);
    for (const MenuItemRef& entry : entries) menu->addItem(entry);
    item->setMenu(menu);
  }
  MenuItemRef entry(const char* title) {
    MenuItemRef made = service.makeMenuItem();
    made->setTitle(title);
    return made;
  }
  static dbl::MenuItem shown(std::size_t index) { return dbl::items().at(0).menu.value().at(index); }
};

TEST_F(MacStatusBarService, makesASquareItemThatGoesWithItsLastReference) {
  item = service.statusItem(kSquareStatusItemLength);
  ASSERT_EQ(dbl::items().size(), 1u);
  EXPECT_EQ(dbl::items()[0].length, -2);
  item = nullptr;
  EXPECT_TRUE(dbl::items().empty());
}

TEST_F(MacStatusBarService, showsASymbolAsATemplateAndClearsIt) {
  item = service.statusItem(kSquareStatusItemLength);
  const SymbolImageRef symbol = service.symbolImage("keyboard", "Lexwend");
  symbol->setTemplate(true);
  item->setImage(symbol);
  EXPECT_EQ(dbl::items()[0].image, (dbl::Image{"keyboard", "Lexwend", true}));
  symbol->setTemplate(false);
  EXPECT_EQ(dbl::items()[0].image, (dbl::Image{"keyboard", "Lexwend", false}));
  item->setImage(nullptr);
  EXPECT_EQ(dbl::items()[0].image, std::nullopt);
}

TEST_F(MacStatusBarService, givesAnItemNeitherTitleNorKeyByItself) {
  showMenu({service.makeMenuItem()});
  EXPECT_EQ(shown(0).title, "");
  EXPECT_EQ(shown(0).keyEquivalent, "");
}

TEST_F(MacStatusBarService, givesNothingForASymbolThatTheSystemDoesNotHave) {
  dbl::symbolIsUnknown("keyboard.badge.ellipsis");
  EXPECT_EQ(service.symbolImage("keyboard.badge.ellipsis", "Lexwend"), nullptr);
}

TEST_F(MacStatusBarService, doesWithoutAButton) {
  dbl::nextItemHasNoButton();
  item = service.statusItem(kSquareStatusItemLength);
  item->setImage(service.symbolImage("keyboard", "Lexwend"));
  EXPECT_EQ(dbl::items()[0].image, std::nullopt);
}

TEST_F(MacStatusBarService, showsEntriesAndSeparatorsInOrder) {
  item = service.statusItem(kSquareStatusItemLength);
  menu = service.makeMenu();
  menu->setAutoenablesItems(false);
  menu->addItem(entry("תקן טקסט מסומן    F2"));
  menu->addSeparator();
  menu->addItem(entry("יציאה"));
  item->setMenu(menu);
  EXPECT_FALSE(dbl::items()[0].menuAutoenables);
  EXPECT_EQ(shown(0).title, "תקן טקסט מסומן    F2");
  EXPECT_TRUE(shown(1).isSeparator);
  EXPECT_EQ(shown(2).title, "יציאה");
  EXPECT_EQ(dbl::items()[0].menu->size(), 3u);
}

TEST_F(MacStatusBarService, leavesAutomaticEnablingOnUnlessTold) {
  item = service.statusItem(kSquareStatusItemLength);
  menu = service.makeMenu();
  item->setMenu(menu);
  EXPECT_TRUE(dbl::items()[0].menuAutoenables);
  menu->setAutoenablesItems(false);
  EXPECT_FALSE(dbl::items()[0].menuAutoenables);
}

TEST_F(MacStatusBarService, changesTheStatesOfAnEntry) {
  const MenuItemRef changing = entry("before");
  showMenu({changing});
  EXPECT_EQ(shown(0).state, 0);
  EXPECT_TRUE(shown(0).isEnabled);
  EXPECT_FALSE(shown(0).isHidden);
  EXPECT_EQ(shown(0).keyEquivalent, "");
  EXPECT_EQ(shown(0).action, "");
  changing->setTitle("after");
  changing->setChecked(true);
  changing->setHidden(true);
  changing->setEnabled(false);
  changing->setKeyEquivalent("q");
  EXPECT_EQ(shown(0).title, "after");
  EXPECT_EQ(shown(0).state, 1);
  EXPECT_TRUE(shown(0).isHidden);
  EXPECT_FALSE(shown(0).isEnabled);
  EXPECT_EQ(shown(0).keyEquivalent, "q");
  changing->setChecked(false);
  changing->setHidden(false);
  changing->setEnabled(true);
  EXPECT_EQ(shown(0).state, 0);
  EXPECT_FALSE(shown(0).isHidden);
  EXPECT_TRUE(shown(0).isEnabled);
}

TEST_F(MacStatusBarService, runsTheActionOfTheChosenEntry) {
  int first = 0;
  int second = 0;
  const MenuItemRef one = entry("one");
  const MenuItemRef two = entry("two");
  one->setAction([&] { ++first; });
  two->setAction([&] { ++second; });
  showMenu({one, two});
  dbl::choose("two");
  EXPECT_EQ(first, 0);
  EXPECT_EQ(second, 1);
}

TEST_F(MacStatusBarService, keepsTheActionsOfEntriesThatNobodyElseKeeps) {
  int chosen = 0;
  {
    const MenuItemRef only = entry("only");
    only->setAction([&] { ++chosen; });
    showMenu({only});
    menu = nullptr;
  }
  dbl::choose("only");
  EXPECT_EQ(chosen, 1);
}

TEST_F(MacStatusBarService, letsAnActionReplaceItself) {
  const auto held = std::make_shared<int>(0);
  const MenuItemRef changing = entry("changing");
  changing->setAction([&held, own = held, entry = std::weak_ptr<MenuItem>(changing)] {
    const auto& outside = held;
    entry.lock()->setAction([] {});
    EXPECT_EQ(outside.use_count(), 2) << "the action went while it runs";
    ++*outside;
  });
  showMenu({changing});
  dbl::choose("changing");
  EXPECT_EQ(*held, 1);
  EXPECT_EQ(held.use_count(), 1);
}

TEST_F(MacStatusBarService, letsGoOfTheActionOfAnEntryThatEndsTheApplication) {
  const auto held = std::make_shared<int>(0);
  const MenuItemRef changing = entry("changing");
  changing->setAction([held] {});
  EXPECT_EQ(held.use_count(), 2);
  changing->setTerminatesApplication();
  EXPECT_EQ(held.use_count(), 1);
}

TEST_F(MacStatusBarService, goesOnWhenAnActionThrows) {
  const MenuItemRef throwing = entry("throwing");
  throwing->setAction([] { throw std::runtime_error("from the action"); });
  showMenu({throwing});
  dbl::choose("throwing");
  EXPECT_EQ(shown(0).title, "throwing");
}

TEST_F(MacStatusBarService, endsTheApplicationInTheStandardWay) {
  const MenuItemRef quit = entry("יציאה");
  quit->setTerminatesApplication();
  EXPECT_EQ(argumentsOf("-[NSMenuItem setTarget:]"), "the application");
  showMenu({quit});
  EXPECT_EQ(shown(0).action, "terminate:");
  dbl::choose("יציאה");
  EXPECT_TRUE(doubles::app::isTerminated());
}

}  // namespace
}  // namespace lexwend::platform::mac
