// SPDX-License-Identifier: MIT
#include "platform/linux/display/x11_connection.h"

#include <cstdlib>
#include <filesystem>

#include <glib.h>
#include <gtest/gtest.h>

#include "platform/linux/accessibility/atspi_bus.h"
#include "tests/linux/testing/temporary_folder.h"
#include "tests/linux/testing/virtual_display.h"

namespace lexwend::platform {
namespace {

TEST(WindowClass, isUtf8WhateverTheWindowSays) {
  const VirtualDisplay display;
  const auto x11 = X11Connection::open();
  {
    const FocusedWindow window("Caf\xE9");
    EXPECT_EQ(x11->activeWindowClass(), "Café");
  }
  const FocusedWindow window("Editor");
  EXPECT_EQ(x11->activeWindowClass(), "Editor");
}

TEST(ActivationOfAWindow, isAskedOfTheWindowManagerWhereThereIsOne) {
  const VirtualDisplay display;
  const auto x11 = X11Connection::open();
  const auto manager = X11Connection::open();
  const auto wish = manager->atom("_NET_ACTIVE_WINDOW");
  std::vector<xcb_client_message_event_t> wishes;
  const auto observation = manager->observe([&](const xcb_generic_event_t& event) {
    const auto& message = reinterpret_cast<const xcb_client_message_event_t&>(event);
    if (eventType(event) == XCB_CLIENT_MESSAGE && message.type == wish) wishes.push_back(message);
  });
  manager->selectRootEvents(XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT);
  const xcb_window_t root = manager->root();
  xcb_change_property(manager->get(), XCB_PROP_MODE_REPLACE, root, manager->atom("_NET_SUPPORTING_WM_CHECK"),
                      XCB_ATOM_WINDOW, 32, 1, &root);
  ASSERT_TRUE(manager->property(root, manager->atom("_NET_SUPPORTING_WM_CHECK")).has_value());
  constexpr xcb_window_t kWindow = 4711;
  x11->activate(kWindow);
  ASSERT_TRUE(pumpUntil([&] { return !wishes.empty(); }));
  constexpr std::uint32_t kWishOfTheUser = 2;
  EXPECT_EQ(wishes.front().window, kWindow);
  EXPECT_EQ(wishes.front().data.data32[0], kWishOfTheUser);
}

TEST(ConnectionWhoseServerDies, wakesNobody) {
  auto display = std::make_unique<VirtualDisplay>();
  const auto x11 = X11Connection::open();
  display.reset();
  ASSERT_TRUE(pumpUntil([&] { return xcb_connection_has_error(x11->get()) != 0; }));
  // A closed connection is always ready to be read: the main context must come to rest all the same.
  constexpr int kEnough = 100;
  int turns = 0;
  while (turns < kEnough && g_main_context_iteration(nullptr, FALSE) != FALSE) ++turns;
  EXPECT_LT(turns, kEnough);
}

TEST(AccessibilityWithoutASessionBus, startsNone) {
  const VirtualDisplay display;
  const test::TemporaryFolder folder;
  const test::EnvironmentVariable address("DBUS_SESSION_BUS_ADDRESS", nullptr);
  const test::EnvironmentVariable runtime("XDG_RUNTIME_DIR", folder.path().c_str());
  const auto trace = folder.file("started");
  const auto launcher = folder.file("dbus-launch");
  test::putContents(launcher, "#!/bin/sh\n: > '" + trace + "'\nexit 1\n");
  std::filesystem::permissions(launcher, std::filesystem::perms::owner_all);
  const test::EnvironmentVariable path("PATH", (folder.path() + ":" + std::getenv("PATH")).c_str());
  AtspiBus bus;
  bus.start();
  EXPECT_FALSE(bus.isConnected());
  EXPECT_FALSE(std::filesystem::exists(trace));
}

}  // namespace
}  // namespace lexwend::platform
