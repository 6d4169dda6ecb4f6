// SPDX-License-Identifier: MIT
#include "platform/linux/keyboard/desktop_layouts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/linux/keyboard/input_sources.h"
#include "platform/linux/session/glib_ref.h"
#include "tests/linux/testing/desktop_settings.h"
#include "tests/linux/testing/virtual_display.h"

namespace lexwend::platform {
namespace {

constexpr char kIntrospection[] =
    "<node><interface name='org.kde.KeyboardLayouts'>"
    "<method name='getLayoutsList'><arg type='a(sss)' direction='out'/></method>"
    "<method name='setLayout'><arg type='u' direction='in'/><arg type='b' direction='out'/></method>"
    "</interface></node>";

/// A private session bus, and on it a desktop with layouts of its own.
struct DesktopLayouts : testing::Test {
  GTestDBus* daemon = g_test_dbus_new(G_TEST_DBUS_NONE);
  GObjectRef<GDBusConnection> desktop;
  GObjectRef<GDBusConnection> agent;
  std::vector<guint32> selected;

  DesktopLayouts() {
    g_test_dbus_up(daemon);
    desktop.reset(connect());
    agent.reset(connect());
  }
  ~DesktopLayouts() override {
    desktop.reset();
    agent.reset();
    g_test_dbus_stop(daemon);
    g_object_unref(daemon);
  }
  GDBusConnection* connect() {
    return g_dbus_connection_new_for_address_sync(
        g_test_dbus_get_bus_address(daemon),
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, nullptr);
  }
  void startDesktop() {
    static const GDBusInterfaceVTable functions = {&DesktopLayouts::called, nullptr, nullptr, {}};
    GDBusNodeInfo* node = g_dbus_node_info_new_for_xml(kIntrospection, nullptr);
    ASSERT_NE(g_dbus_connection_register_object(desktop.get(), "/Layouts", node->interfaces[0], &functions,
                                                this, nullptr, nullptr),
              0U);
    g_dbus_node_info_unref(node);
    bool owns = false;
    g_bus_own_name_on_connection(
        desktop.get(), "org.kde.keyboard", G_BUS_NAME_OWNER_FLAGS_NONE,
        [](GDBusConnection*, const gchar*, gpointer flag) { *static_cast<bool*>(flag) = true; }, nullptr,
        &owns, nullptr);
    ASSERT_TRUE(pumpUntil([&] { return owns; }));
  }
  static void called(GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar* method,
                     GVariant* parameters, GDBusMethodInvocation* invocation, gpointer self) {
    auto* test = static_cast<DesktopLayouts*>(self);
    if (std::string(method) == "getLayoutsList") {
      g_dbus_method_invocation_return_value(
          invocation,
          g_variant_new_parsed("([('de', '', 'German'), ('us', '', 'English'), ('il', '', 'Hebrew'), "
                               "('us', 'dv', 'Dvorak')],)"));
    } else {
      guint32 index = 0;
      g_variant_get(parameters, "(u)", &index);
      test->selected.push_back(index);
      g_dbus_method_invocation_return_value(invocation, g_variant_new("(b)", TRUE));
    }
  }
};

TEST_F(DesktopLayouts, areToldWhichLayoutWasSelected) {
  startDesktop();
  tellDesktopOfLayout(agent.get(), "il", 0);
  ASSERT_TRUE(pumpUntil([&] { return selected.size() == 1; }));
  tellDesktopOfLayout(agent.get(), "us", 1);
  ASSERT_TRUE(pumpUntil([&] { return selected.size() == 2; }));
  EXPECT_THAT(selected, testing::ElementsAre(2, 3));
}

TEST_F(DesktopLayouts, areToldByTheInputSourceThatIsSelected) {
  startDesktop();
  const VirtualDisplay display;
  Typist typist;
  VirtualDisplay::setLayouts("us,il,us", ",,dvorak");
  LinuxInputSources sources(X11Connection::open(), [this] { return agent.get(); });
  const auto list = sources.createInputSourceList({InputSourceType::keyboardLayout, true}, false).value();
  ASSERT_EQ(list.size(), 3U);
  for (const std::size_t group : {std::size_t{2}, std::size_t{1}, std::size_t{0}}) {
    sources.select(list[group]);
    EXPECT_EQ(typist.group(), static_cast<int>(group));
  }
  ASSERT_TRUE(pumpUntil([&] { return selected.size() == 3; }));
  EXPECT_THAT(selected, testing::ElementsAre(3, 2, 1));
}

TEST_F(DesktopLayouts, areLeftAloneWithALayoutThatTheyDoNotHave) {
  startDesktop();
  tellDesktopOfLayout(agent.get(), "fr", 0);
  tellDesktopOfLayout(agent.get(), "us", 2);
  tellDesktopOfLayout(agent.get(), "il", 0);
  ASSERT_TRUE(pumpUntil([&] { return !selected.empty(); }));
  EXPECT_THAT(selected, testing::ElementsAre(2));
}

TEST_F(DesktopLayouts, mayBeMissing) {
  tellDesktopOfLayout(agent.get(), "il", 0);
  tellDesktopOfLayout(nullptr, "il", 0);
  // The bus answers in order: the desktop comes too late for that.
  const GVariantRef answer(g_dbus_connection_call_sync(
      agent.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetId", nullptr,
      nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
  ASSERT_NE(answer, nullptr);
  startDesktop();
  tellDesktopOfLayout(agent.get(), "de", 0);
  ASSERT_TRUE(pumpUntil([&] { return !selected.empty(); }));
  EXPECT_THAT(selected, testing::ElementsAre(0));
}

TEST_F(DesktopLayouts, areSelectedByTheShortcutOfADesktopThatKeepsThem) {
  DesktopSettings& settings = DesktopSettings::shared();
  settings.setLayouts("sources", {"us", "il"});
  settings.setShortcuts("switch-input-source", {"<Control>k"});
  const VirtualDisplay display;
  Typist typist;
  VirtualDisplay::setLayouts("us,il");
  std::vector<std::pair<KeyCode, EventFlags>> played;
  LinuxInputSources sources(
      X11Connection::open(), [this] { return agent.get(); },
      [&](KeyCode key, EventFlags modifiers) { played.emplace_back(key, modifiers); });
  const auto list = sources.createInputSourceList({InputSourceType::keyboardLayout, true}, false).value();
  ASSERT_EQ(list.size(), 2U);
  sources.select(list[1]);
  EXPECT_EQ(typist.group(), 1);
  EXPECT_TRUE(played.empty());  // such a desktop is not there

  bool owns = false;
  g_bus_own_name_on_connection(
      desktop.get(), "org.gnome.Shell", G_BUS_NAME_OWNER_FLAGS_NONE,
      [](GDBusConnection*, const gchar*, gpointer flag) { *static_cast<bool*>(flag) = true; }, nullptr, &owns,
      nullptr);
  ASSERT_TRUE(pumpUntil([&] { return owns; }));
  settings.setLayouts("mru-sources", {"il", "us"});
  sources.select(list[0]);
  EXPECT_EQ(typist.group(), 1);  // that is left to the desktop
  EXPECT_THAT(played, testing::ElementsAre(testing::Pair(KeyCode{40}, kEventFlagCommand)));
  typist.lockGroup(0);
  EXPECT_FALSE(pumpUntil([&] { return played.size() > 1; }, std::chrono::milliseconds(300)));

  settings.setShortcuts("switch-input-source", {});
  sources.select(list[1]);  // no shortcut can be pressed
  EXPECT_EQ(typist.group(), 1);
}

}  // namespace
}  // namespace lexwend::platform
