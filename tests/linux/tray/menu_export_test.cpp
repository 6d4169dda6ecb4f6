// SPDX-License-Identifier: MIT
#include "platform/linux/tray/menu_export.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/linux/session/buses.h"
#include "platform/linux/tray/menu.h"
#include "tests/linux/testing/private_desktop.h"

namespace lexwend::platform {
namespace {

constexpr char kInterface[] = "com.canonical.dbusmenu";

/// A panel that draws the menu of an item itself: what it reads, and what it hears of changes.
class DrawingPanel {
 public:
  DrawingPanel() {
    subscription_ = g_dbus_connection_signal_subscribe(peer_.connection(), nullptr, kInterface, nullptr,
                                                       MenuExport::kPath, nullptr, G_DBUS_SIGNAL_FLAGS_NONE,
                                                       &DrawingPanel::heard, this, nullptr);
  }
  ~DrawingPanel() { g_dbus_connection_signal_unsubscribe(peer_.connection(), subscription_); }
  DrawingPanel(const DrawingPanel&) = delete;
  DrawingPanel& operator=(const DrawingPanel&) = delete;

  /// The answer in GVariant's text form; "refused" where there is none.
  std::string ask(const char* method, const char* arguments) {
    return call(kInterface, method, g_variant_new_parsed(arguments));
  }
  std::string property(const char* name) {
    return call("org.freedesktop.DBus.Properties", "Get", g_variant_new("(ss)", kInterface, name));
  }

  std::vector<std::string> signals;

 private:
  std::string call(const char* interface, const char* method, GVariant* arguments) {
    const auto reply = peer_.call(g_dbus_connection_get_unique_name(sessionBus()), MenuExport::kPath,
                                  interface, method, arguments);
    return reply != nullptr ? inWords(reply.get()) : "refused";
  }
  static std::string inWords(GVariant* value) {
    gchar* text = g_variant_print(value, FALSE);
    std::string result = text;
    g_free(text);
    return result;
  }
  static void heard(GDBusConnection*, const char*, const char*, const char*, const char* signal,
                    GVariant* arguments, void* self) {
    static_cast<DrawingPanel*>(self)->signals.push_back(std::string(signal) + " " + inWords(arguments));
  }

  BusPeer peer_;
  guint subscription_;
};

struct ExportedMenu : ::testing::Test {
  PrivateDesktop& desktop = PrivateDesktop::shared();
  DrawingPanel panel;
  std::string chosen;
  std::shared_ptr<LinuxMenuItem> fix = item("תקן_זאת    Ctrl+F5", 'f');
  std::shared_ptr<LinuxMenuItem> toggle = item("סימון", 't');
  std::shared_ptr<LinuxMenuItem> status = item("גרסה 1", 's');
  std::shared_ptr<LinuxMenuItem> quit = std::make_shared<LinuxMenuItem>([this] { chosen += 'q'; });
  std::shared_ptr<LinuxMenu> menu = std::make_shared<LinuxMenu>();
  std::optional<MenuExport> exported{sessionBus()};

  ExportedMenu() {
    toggle->setChecked(true);
    status->setEnabled(false);
    quit->setTitle("יציאה");
    quit->setTerminatesApplication();
    quit->setKeyEquivalent("q");
    menu->addItem(fix);
    menu->addSeparator();
    for (const auto& each : {toggle, status, quit}) menu->addItem(each);
    exported->setMenu(menu);
    hear("LayoutUpdated (2, 0)");
  }
  std::shared_ptr<LinuxMenuItem> item(const char* title, char letter) {
    auto made = std::make_shared<LinuxMenuItem>([] {});
    made->setTitle(title);
    made->setAction([this, letter] { chosen += letter; });
    return made;
  }
  /// Waits for the next signal and takes it for heard.
  void hear(const std::string& expected) {
    ASSERT_TRUE(pumpUntil([this] { return !panel.signals.empty(); })) << expected;
    EXPECT_EQ(panel.signals.front(), expected);
    panel.signals.erase(panel.signals.begin());
  }
};

TEST_F(ExportedMenu, isRightToLeftAndOfThePublishedVersion) {
  EXPECT_EQ(panel.property("TextDirection"), "(<'rtl'>,)");
  EXPECT_EQ(panel.property("Version"), "(<uint32 3>,)");
  EXPECT_EQ(panel.property("Status"), "(<'normal'>,)");
}

TEST_F(ExportedMenu, isReadWithEverythingThatTheAgentsOwnMenuShows) {
  EXPECT_EQ(panel.ask("GetLayout", "(0, -1, ['label'])"),
            "(2, (0, {}, [<(1, {'label': <'\\u2067תקן__זאת    \\u2066Ctrl+F5\\u2069\\u2069'>}, @av [])>, "
            "<(2, @a{sv} {}, @av [])>, "
            "<(3, {'label': <'\\u2067סימון\\u2069'>}, @av [])>, <(4, {'label': <'\\u2067גרסה 1\\u2069'>}, "
            "@av [])>, "
            "<(5, {'label': <'\\u2067יציאה\\u2069'>}, @av [])>]))");
  EXPECT_EQ(panel.ask("GetLayout", "(0, 0, @as [])"), "(2, (0, {'children-display': <'submenu'>}, []))");
  EXPECT_EQ(panel.ask("GetLayout", "(2, -1, @as [])"), "(2, (2, {'type': <'separator'>}, []))");
  EXPECT_EQ(panel.ask("GetGroupProperties", "([3, 4, 77], ['toggle-type', 'toggle-state', 'enabled'])"),
            "([(3, {'toggle-type': <'checkmark'>, 'toggle-state': <1>, 'enabled': <true>}), "
            "(4, {'toggle-type': <''>, 'toggle-state': <0>, 'enabled': <false>})],)");
  EXPECT_EQ(
      panel.ask("GetGroupProperties", "(@ai [], ['type'])"),
      "([(0, {}), (1, {'type': <'standard'>}), (2, {'type': <'separator'>}), (3, {'type': <'standard'>}), "
      "(4, {'type': <'standard'>}), (5, {'type': <'standard'>})],)");
  EXPECT_EQ(panel.ask("GetProperty", "(5, 'shortcut')"), "(<[['Control', 'Q']]>,)");
  EXPECT_EQ(panel.ask("GetProperty", "(1, 'visible')"), "(<true>,)");
  EXPECT_EQ(panel.ask("AboutToShow", "(0,)"), "(false,)");
  EXPECT_EQ(panel.ask("AboutToShowGroup", "([0, 9],)"), "([], [9])");
}

TEST_F(ExportedMenu, refusesWhatItDoesNotHave) {
  EXPECT_EQ(panel.ask("GetLayout", "(6, -1, @as [])"), "refused");
  EXPECT_EQ(panel.ask("GetLayout", "(-1, -1, @as [])"), "refused");
  EXPECT_EQ(panel.ask("GetProperty", "(1, 'icon-name')"), "refused");
  EXPECT_EQ(panel.ask("Event", "(6, 'clicked', <0>, uint32 0)"), "refused");
}

TEST_F(ExportedMenu, doesWhatTheClickedItemDoes) {
  EXPECT_EQ(panel.ask("Event", "(1, 'hovered', <0>, uint32 0)"), "()");
  EXPECT_EQ(panel.ask("Event", "(0, 'clicked', <0>, uint32 0)"), "()");
  EXPECT_EQ(panel.ask("Event", "(2, 'clicked', <0>, uint32 0)"), "()");
  EXPECT_EQ(panel.ask("Event", "(4, 'clicked', <0>, uint32 0)"), "()") << "disabled, but there";
  EXPECT_EQ(chosen, "");
  EXPECT_EQ(panel.ask("Event", "(1, 'clicked', <0>, uint32 0)"), "()");
  EXPECT_EQ(chosen, "f");
  EXPECT_EQ(panel.ask("EventGroup",
                      "([(3, 'clicked', <0>, uint32 0), (8, 'clicked', <0>, 0), (5, 'clicked', <0>, 0)],)"),
            "([8],)");
  EXPECT_EQ(chosen, "ftq");
  fix->setHidden(true);
  EXPECT_EQ(panel.ask("Event", "(1, 'clicked', <0>, uint32 0)"), "()");
  EXPECT_EQ(chosen, "ftq");
}

TEST_F(ExportedMenu, announcesWhatHasChangedAndNothingElse) {
  toggle->setChecked(true);
  status->setTitle("גרסה 1");
  toggle->setChecked(false);
  hear(
      "ItemsPropertiesUpdated ([(3, {'type': <'standard'>, 'label': <'\\u2067סימון\\u2069'>, 'enabled': "
      "<true>, "
      "'visible': <true>, 'shortcut': <@aas []>, 'toggle-type': <'checkmark'>, 'toggle-state': <0>})], [])");
  fix->setHidden(true);
  hear(
      "ItemsPropertiesUpdated ([(1, {'type': <'standard'>, 'label': <'\\u2067תקן__זאת    "
      "\\u2066Ctrl+F5\\u2069\\u2069'>, 'enabled': <true>, "
      "'visible': <false>, 'shortcut': <@aas []>, 'toggle-type': <''>, 'toggle-state': <0>})], [])");
}

TEST_F(ExportedMenu, announcesNewEntriesAndFollowsThem) {
  menu->addSeparator();
  hear("LayoutUpdated (3, 0)");
  const auto late = item("מאוחר", 'l');
  menu->addItem(late);
  hear("LayoutUpdated (4, 0)");
  late->setTitle("מאוחר יותר");
  EXPECT_EQ(panel.ask("GetProperty", "(7, 'label')"), "(<'\\u2067מאוחר יותר\\u2069'>,)");
  EXPECT_TRUE(pumpUntil([this] { return panel.signals.size() == 1; }));
}

TEST_F(ExportedMenu, tellsInLinesBelowATitleWhatStandsInItsTooltip) {
  status->setToolTip("GNOME לא מרשה לתוכנה לקבל מקש קיצור, וההרחבה לא מופעלת.");
  EXPECT_EQ(panel.ask("GetProperty", "(4, 'label')"),
            "(<'\\u2067גרסה 1\\u2069\\n"
            "\\u2067GNOME לא מרשה לתוכנה לקבל מקש קיצור, וההרחבה\\u2069\\n"
            "\\u2067לא מופעלת.\\u2069'>,)");
  status->setToolTip("");
  EXPECT_EQ(panel.ask("GetProperty", "(4, 'label')"), "(<'\\u2067גרסה 1\\u2069'>,)");
}

TEST_F(ExportedMenu, mayGoAwayByAnItemOfItsOwn) {
  fix->setAction([this] { exported.reset(); });
  EXPECT_EQ(panel.ask("EventGroup", "([(1, 'clicked', <0>, uint32 0), (3, 'clicked', <0>, 0)],)"), "([],)");
  EXPECT_FALSE(exported.has_value());
  EXPECT_EQ(chosen, "t");
  EXPECT_EQ(panel.ask("AboutToShow", "(0,)"), "refused");
}

TEST_F(ExportedMenu, isEmptyWithoutAMenu) {
  exported->setMenu(nullptr);
  EXPECT_EQ(panel.ask("GetLayout", "(0, -1, ['label'])"), "(3, (0, {}, []))");
}

}  // namespace
}  // namespace lexwend::platform
