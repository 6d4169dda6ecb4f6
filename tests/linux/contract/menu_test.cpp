// SPDX-License-Identifier: MIT
#include <QApplication>
#include <QWidget>

#include <gtest/gtest.h>

#include "platform/hot_key_service.h"
#include "platform/status_item.h"
#include "tests/contract/host_under_test.h"

namespace lexwend::contract {
namespace {

using namespace std::chrono_literals;

/// The open menu has the keyboard for itself, so the server gives the press to no hot key.
TEST(OpenMenuOfTheAgent, keepsPressesFromTheHotKeyForGood) {
  const auto underTest = makeHostUnderTest();
  auto& hotKeys = underTest->host().hotKeyService();
  int pressed = 0;
  hotKeys.installHandler([&](const platform::HotKeyEvent&) {
    ++pressed;
    return platform::kNoErr;
  });
  const auto registration = hotKeys.registerHotKey(platform::kKeyF9, platform::kNoModifiers, {1, 1});
  ASSERT_EQ(registration.status, platform::kNoErr);
  auto& statusBar = underTest->host().statusBar();
  const auto item = statusBar.statusItem(platform::kSquareStatusItemLength);
  const auto menu = statusBar.makeMenu();
  const auto entry = statusBar.makeMenuItem();
  entry->setTitle("entry");
  menu->addItem(entry);
  item->setMenu(menu);
  item->setImage(statusBar.symbolImage("keyboard", "Lexwend"));

  ASSERT_EQ(underTest->visibleMenu(), std::vector<std::string>{"entry"});
  const auto settle = [&] { underTest->waitUntil([] { return false; }, 150ms); };
  underTest->userPresses(platform::kKeyF9, platform::kNoModifiers);
  settle();
  ASSERT_NE(QApplication::activePopupWidget(), nullptr);
  QApplication::activePopupWidget()->close();
  settle();
  EXPECT_EQ(pressed, 0);
  underTest->userPresses(platform::kKeyF9, platform::kNoModifiers);
  EXPECT_TRUE(underTest->waitUntil([&] { return pressed == 1; }));
}

}  // namespace
}  // namespace lexwend::contract
