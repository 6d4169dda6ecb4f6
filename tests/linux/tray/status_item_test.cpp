// SPDX-License-Identifier: MIT
#include "platform/linux/tray/status_item.h"

#include <QApplication>
#include <QMenu>
#include <atomic>
#include <filesystem>
#include <mutex>

#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

#include "platform/linux/display/x11_connection.h"
#include "platform/linux/tray/menu.h"
#include "platform/linux/tray/symbol_image.h"
#include "tests/linux/testing/private_desktop.h"
#include "tests/linux/testing/temporary_folder.h"

namespace lexwend::platform {
namespace {

constexpr char kWatcher[] = "org.kde.StatusNotifierWatcher";

/// A panel that shows StatusNotifier items.
class Panel {
 public:
  Panel() {
    peer_.answer([this](const std::string& method, GVariant* arguments) -> GVariant* {
      if (method == "Get") return g_variant_new("(v)", g_variant_new_boolean(showsItems ? TRUE : FALSE));
      if (method != "RegisterStatusNotifierItem") return nullptr;
      const char* name = nullptr;
      g_variant_get(arguments, "(&s)", &name);
      const std::lock_guard lock(mutex_);
      item_ = name;
      return g_variant_new("()");
    });
  }
  /// It takes calls and does not answer them.
  void beBusy(bool busy) { peer_.beSilent(busy); }
  int questions() const { return peer_.unanswered(); }
  void appear() { peer_.ownName(kWatcher); }
  void vanish() {
    peer_.releaseName(kWatcher);
    const std::lock_guard lock(mutex_);
    item_.clear();
  }
  std::string item() {
    const std::lock_guard lock(mutex_);
    return item_;
  }
  GVariant* property(const char* name) {
    const auto reply = peer_.call(item(), "/StatusNotifierItem", "org.freedesktop.DBus.Properties", "Get",
                                  g_variant_new("(ss)", "org.kde.StatusNotifierItem", name));
    if (reply == nullptr) return nullptr;
    GVariant* value = nullptr;
    g_variant_get(reply.get(), "(v)", &value);
    return value;
  }
  std::string toolTip() {
    GVariant* value = property("ToolTip");
    const char* text = nullptr;
    g_variant_get(value, "(&s@a(iiay)&s&s)", nullptr, nullptr, nullptr, &text);
    std::string result = text;
    g_variant_unref(value);
    return result;
  }
  std::string text(const char* name) {
    GVariant* value = property(name);
    std::string result = value != nullptr ? g_variant_get_string(value, nullptr) : "refused";
    if (value != nullptr) g_variant_unref(value);
    return result;
  }
  void click() {
    peer_.call(item(), "/StatusNotifierItem", "org.kde.StatusNotifierItem", "Activate",
               g_variant_new("(ii)", 5, 5));
  }

  std::atomic<bool> showsItems = true;

 private:
  BusPeer peer_;
  std::mutex mutex_;
  std::string item_;
};

/// The owner of the display's tray of windows (System Tray Protocol Specification), which takes none in.
class EmbeddingTray {
 public:
  EmbeddingTray() {
    const auto window = xcb_generate_id(x11_->get());
    xcb_create_window(x11_->get(), XCB_COPY_FROM_PARENT, window, x11_->root(), 0, 0, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    const auto selection = x11_->atom("_NET_SYSTEM_TRAY_S0");
    xcb_set_selection_owner(x11_->get(), window, selection, XCB_CURRENT_TIME);
    xcb_client_message_event_t announcement{};
    announcement.response_type = XCB_CLIENT_MESSAGE;
    announcement.format = 32;
    announcement.window = x11_->root();
    announcement.type = x11_->atom("MANAGER");
    announcement.data.data32[1] = selection;
    announcement.data.data32[2] = window;
    xcb_send_event(x11_->get(), 0, x11_->root(), XCB_EVENT_MASK_STRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&announcement));
    x11_->flush();
  }

 private:
  std::shared_ptr<X11Connection> x11_ = X11Connection::open();
};

/// A file of the user's icon theme.
class InstalledIcon {
 public:
  explicit InstalledIcon(const std::string& name) {
    const std::string place = folder_.file("icons/hicolor/symbolic/apps");
    std::filesystem::create_directories(place);
    test::putContents(place + "/" + name + ".svg", "<svg/>");
  }
  std::string themes() const { return folder_.file("icons"); }

 private:
  test::TemporaryFolder folder_;
  test::EnvironmentVariable dataHome_{"XDG_DATA_HOME", folder_.path().c_str()};
};

/// A menu of the agent's kind: an item, a check mark, an information line and Quit.
struct Tray : ::testing::Test {
  LinuxHost& host = PrivateDesktop::shared().host();
  StatusBar& bar = host.statusBar();
  MenuRef menu = bar.makeMenu();
  MenuItemRef fix = bar.makeMenuItem();
  MenuItemRef toggle = bar.makeMenuItem();
  MenuItemRef status = bar.makeMenuItem();
  MenuItemRef quit = bar.makeMenuItem();
  int fixes = 0;

  Tray() {
    menu->setAutoenablesItems(false);
    fix->setTitle("תקן & עוד");
    fix->setAction([this] { ++fixes; });
    toggle->setTitle("סימון");
    toggle->setChecked(true);
    toggle->setAction([] {});
    status->setTitle("גרסה 1 · פעיל");
    status->setEnabled(false);
    quit->setTitle("יציאה");
    quit->setTerminatesApplication();
    quit->setKeyEquivalent("q");
    for (const auto& item : {fix, toggle}) menu->addItem(item);
    menu->addSeparator();
    for (const auto& item : {status, quit}) menu->addItem(item);
  }
  static int embeddedIcons() {
    int count = 0;
    for (const QWidget* widget : QApplication::topLevelWidgets()) {
      count += std::string_view(widget->metaObject()->className()) == "QSystemTrayIconSys" ? 1 : 0;
    }
    return count;
  }
  QMenu& shown() { return std::dynamic_pointer_cast<LinuxMenu>(menu)->shown(); }
  /// An item with that symbol, which the panel has taken in.
  StatusItemRef itemIn(Panel& panel, const char* symbol = "keyboard") {
    panel.appear();
    StatusItemRef item = bar.statusItem(kSquareStatusItemLength);
    item->setImage(bar.symbolImage(symbol, "Lexwend"));
    EXPECT_TRUE(pumpUntil([&] { return !panel.item().empty(); }));
    return item;
  }
};

TEST_F(Tray, menuIsDrawnRightToLeftWithItsTextsToTheLetter) {
  EXPECT_EQ(shown().layoutDirection(), Qt::RightToLeft);
  ASSERT_EQ(shown().actions().size(), 5);
  EXPECT_EQ(shown().actions()[0]->text(), QString("תקן && עוד"));  // the toolkit's spelling of one ampersand
  EXPECT_TRUE(shown().actions()[2]->isSeparator());
  EXPECT_FALSE(shown().actions()[3]->isEnabled());
  EXPECT_EQ(shown().actions()[4]->shortcut(), QKeySequence("Ctrl+Q"));
  EXPECT_TRUE(shown().actions()[4]->isShortcutVisibleInContextMenu());
}

TEST_F(Tray, menuDrawsACombinationInItsOrderAndLeavesTheTitleAsItIs) {
  const auto drawn = [](const QString& text) {
    QMenu plain;
    plain.setLayoutDirection(Qt::RightToLeft);
    plain.addAction(text);
    return plain.grab().toImage();
  };
  const MenuRef single = bar.makeMenu();
  single->addItem(fix);
  fix->setTitle("תקן    Ctrl+,");
  QMenu& own = std::dynamic_pointer_cast<LinuxMenu>(single)->shown();
  EXPECT_EQ(own.actions()[0]->text(), QString("תקן    Ctrl+,"));
  EXPECT_EQ(own.grab().toImage(), drawn(QString("תקן    ") + QChar(0x2066) + "Ctrl+," + QChar(0x2069)));
  EXPECT_NE(own.grab().toImage(), drawn("תקן    Ctrl+,"));
}

TEST_F(Tray, menusLinesAreSeenInADarkTheme) {
  QPalette dark = shown().palette();
  dark.setColor(QPalette::Base, QColor(0x1b, 0x1e, 0x20));
  dark.setColor(QPalette::Window, QColor(0x2a, 0x2e, 0x32));
  dark.setColor(QPalette::Text, Qt::white);
  shown().setPalette(dark);
  const QImage drawn = shown().grab().toImage();
  const QRect separator = shown().actionGeometry(shown().actions()[2]);
  for (const QPoint place : {QPoint(0, drawn.height() / 2), separator.center()}) {
    EXPECT_GT(qGray(drawn.pixel(place)), 2 * qGray(dark.color(QPalette::Window).rgb())) << place.x();
  }
}

TEST_F(Tray, menusKeyEquivalentWorksWhileTheMenuIsOpen) {
  int chosen = 0;
  fix->setKeyEquivalent("x");
  fix->setAction([&] { ++chosen; });
  shown().popup({0, 0});
  ASSERT_TRUE(pumpUntil([&] { return QApplication::activePopupWidget() == &shown(); }));
  Typist typist;
  typist.press(KEY_LEFTCTRL);
  typist.tap(KEY_X);
  typist.release(KEY_LEFTCTRL);
  EXPECT_TRUE(pumpUntil([&] { return chosen == 1; }));
  EXPECT_FALSE(shown().isVisible());
}

TEST_F(Tray, menuFollowsItsItemsWhileItIsShown) {
  QAction* action = shown().actions()[0];
  fix->setTitle("אחר");
  fix->setHidden(true);
  EXPECT_EQ(action->text(), QString("אחר"));
  EXPECT_FALSE(action->isVisible());
  fix->setHidden(false);
  EXPECT_TRUE(action->isVisible());
}

TEST_F(Tray, menusCheckMarkFollowsTheSettingAndNotTheClick) {
  QAction* action = shown().actions()[1];
  ASSERT_TRUE(action->isChecked());
  action->trigger();
  EXPECT_TRUE(action->isChecked());
  toggle->setAction([this] { toggle->setChecked(false); });
  action->trigger();
  EXPECT_FALSE(action->isChecked());
}

TEST_F(Tray, menusItemMayTakeTheWholeMenuAway) {
  fix->setAction([this] { menu.reset(); });
  const QPointer<QMenu> open = &shown();
  open->actions()[0]->trigger();
  EXPECT_TRUE(pumpUntil([&] { return open.isNull(); }));
}

TEST_F(Tray, itemShowsImageToolTipAndMenuInAPanel) {
  Panel panel;
  panel.appear();
  const auto item = bar.statusItem(kSquareStatusItemLength);
  item->setMenu(menu);
  const auto image = bar.symbolImage("keyboard", "Lexwend");
  ASSERT_NE(image, nullptr);
  image->setTemplate(true);
  item->setImage(image);
  ASSERT_TRUE(pumpUntil([&] { return !panel.item().empty(); }));

  EXPECT_EQ(panel.toolTip(), "גרסה 1 · פעיל");
  status->setTitle("גרסה 1 · ממתין");
  EXPECT_EQ(panel.toolTip(), "גרסה 1 · ממתין");
  status->setToolTip("אין פריסה עברית.");
  EXPECT_EQ(panel.toolTip(), "גרסה 1 · ממתין\nאין פריסה עברית.");
  EXPECT_EQ(shown().actions()[3]->toolTip(), QString("אין פריסה עברית."));
  GVariant* pixmaps = panel.property("IconPixmap");
  EXPECT_EQ(g_variant_n_children(pixmaps), std::size(kTrayIconSides));
  g_variant_unref(pixmaps);

  panel.click();
  EXPECT_TRUE(pumpUntil([&] { return shown().isVisible(); }));
  panel.click();
  EXPECT_TRUE(pumpUntil([&] { return !shown().isVisible(); }));
}

TEST_F(Tray, itemHasNoNameForAnIconThatIsNotInstalled) {
  Panel panel;
  const auto item = itemIn(panel);
  EXPECT_EQ(panel.text("IconName"), "");
  EXPECT_EQ(panel.text("IconThemePath"), "");
}

TEST_F(Tray, itemNamesItsInstalledIconForThePanelToColor) {
  const InstalledIcon icon("org.lexwend.Lexwend-failed-symbolic");
  const test::EnvironmentVariable desktopName("XDG_CURRENT_DESKTOP", "XFCE");
  Panel panel;
  const auto item = itemIn(panel, "xmark");
  EXPECT_EQ(panel.text("IconName"), "org.lexwend.Lexwend-failed-symbolic");
  EXPECT_TRUE(std::filesystem::equivalent(panel.text("IconThemePath"), icon.themes()));
  item->setImage(bar.symbolImage("keyboard", "Lexwend"));  // which an older version has not installed
  EXPECT_EQ(panel.text("IconName"), "");
}

TEST_F(Tray, itemTellsItsIconAnewWhenTheThemeChanges) {
  const InstalledIcon icon("org.lexwend.Lexwend-symbolic");
  const test::EnvironmentVariable desktopName("XDG_CURRENT_DESKTOP", "XFCE");
  const auto x11 = X11Connection::open();
  const auto window = xcb_generate_id(x11->get());
  xcb_create_window(x11->get(), XCB_COPY_FROM_PARENT, window, x11->root(), 0, 0, 1, 1, 0,
                    XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
  xcb_set_selection_owner(x11->get(), window, x11->atom("_XSETTINGS_S0"), XCB_CURRENT_TIME);
  x11->flush();
  Panel panel;
  const auto item = itemIn(panel);
  ASSERT_NE(panel.text("IconName"), "");
  xcb_change_property(x11->get(), XCB_PROP_MODE_REPLACE, window, x11->atom("_XSETTINGS_SETTINGS"),
                      x11->atom("_XSETTINGS_SETTINGS"), 8, 4, "dark");
  x11->flush();
  EXPECT_TRUE(pumpUntil([&] { return panel.text("IconName").empty(); }));
  EXPECT_TRUE(pumpUntil([&] { return panel.text("IconName") == "org.lexwend.Lexwend-symbolic"; }));
}

TEST_F(Tray, itemTellsItsIconAnewWhenPlasmasColorsChange) {
  const InstalledIcon icon("org.lexwend.Lexwend-symbolic");
  const test::EnvironmentVariable desktopName("XDG_CURRENT_DESKTOP", "KDE");
  Panel panel;
  const auto item = itemIn(panel);
  ASSERT_NE(panel.text("IconName"), "");
  BusPeer desktop;
  desktop.emit("/KGlobalSettings", "org.kde.KGlobalSettings", "notifyChange", g_variant_new("(ii)", 0, 0));
  EXPECT_TRUE(pumpUntil([&] { return panel.text("IconName").empty(); }));
  EXPECT_TRUE(pumpUntil([&] { return panel.text("IconName") == "org.lexwend.Lexwend-symbolic"; }));
}

TEST_F(Tray, itemHasNoNameForAPanelThatColorsNone) {
  const InstalledIcon icon("org.lexwend.Lexwend-symbolic");
  for (const char* desktop : {static_cast<const char*>(nullptr), "LXQt", "MATE"}) {
    const test::EnvironmentVariable desktopName("XDG_CURRENT_DESKTOP", desktop);
    Panel panel;
    const auto item = itemIn(panel);
    EXPECT_EQ(panel.text("IconName"), "");
  }
}

TEST_F(Tray, itemWaitsForAPanelThatIsBusyAndMakesNoSecondIcon) {
  const EmbeddingTray tray;
  Panel panel;
  panel.beBusy(true);
  panel.appear();
  const auto item = bar.statusItem(kSquareStatusItemLength);
  item->setImage(bar.symbolImage("keyboard", "Lexwend"));
  // The registration, the question, and the question again.
  ASSERT_TRUE(pumpUntil([&] { return panel.questions() >= 3; }));
  EXPECT_EQ(embeddedIcons(), 0);
  EXPECT_FALSE(item->isShown());
  panel.beBusy(false);
  EXPECT_TRUE(pumpUntil([&] { return item->isShown(); }));
  EXPECT_EQ(embeddedIcons(), 0);
}

TEST_F(Tray, itemIsNotShownWithoutPanelAndTray) {
  const auto item = bar.statusItem(kSquareStatusItemLength);
  item->setImage(bar.symbolImage("keyboard", "Lexwend"));
  EXPECT_FALSE(pumpUntil([&] { return item->isShown(); }, std::chrono::milliseconds(300)));
  Panel panel;
  panel.appear();
  EXPECT_TRUE(pumpUntil([&] { return item->isShown(); }));
}

TEST_F(Tray, itemMovesFromAnEmbeddingTrayToAPanel) {
  const EmbeddingTray tray;
  const auto item = bar.statusItem(kSquareStatusItemLength);
  item->setImage(bar.symbolImage("keyboard", "Lexwend"));
  EXPECT_TRUE(pumpUntil([&] { return embeddedIcons() == 1; }));
  EXPECT_TRUE(item->isShown());
  Panel panel;
  panel.appear();
  EXPECT_TRUE(pumpUntil([&] { return embeddedIcons() == 0; }));
  EXPECT_TRUE(item->isShown());
}

TEST_F(Tray, itemOpensItsMenuWithoutAClickAndLeavesAnOpenOneOpen) {
  const auto item = bar.statusItem(kSquareStatusItemLength);
  item->setMenu(menu);
  for (int i = 0; i < 2; ++i) {
    item->openMenu();
    ASSERT_TRUE(pumpUntil([&] { return shown().isVisible(); }));
    EXPECT_TRUE(LinuxStatusBar::menuIsOpen());
  }
  shown().close();
  EXPECT_FALSE(LinuxStatusBar::menuIsOpen());
}

TEST_F(Tray, itemRegistersWithAPanelThatAppearsLateOrRestarts) {
  Panel panel;
  const auto item = bar.statusItem(kSquareStatusItemLength);
  EXPECT_EQ(panel.item(), "");
  for (int i = 0; i < 3; ++i) {
    panel.appear();
    EXPECT_TRUE(pumpUntil([&] { return !panel.item().empty(); }));
    panel.vanish();
  }
}

TEST(Symbols, areThereUnderTheirFourNamesAndNoOther) {
  for (const auto* name : {"keyboard", "keyboard.badge.ellipsis", "checkmark", "xmark"}) {
    EXPECT_NE(LinuxSymbolImage::named(name, ""), nullptr) << name;
  }
  EXPECT_EQ(LinuxSymbolImage::named("keyboard.badge", ""), nullptr);
}

struct SymbolsDrawing : ::testing::TestWithParam<int> {
  PrivateDesktop& desktop = PrivateDesktop::shared();
};

TEST_P(SymbolsDrawing, isWhiteOnAFieldOfItsOwnColor) {
  const int side = GetParam();
  for (const auto* name : {"keyboard", "keyboard.badge.ellipsis", "checkmark", "xmark"}) {
    const auto symbol = LinuxSymbolImage::named(name, "");
    symbol->setTemplate(true);
    const QImage image = symbol->rendered(side).convertToFormat(QImage::Format_ARGB32);
    int light = 0;
    int field = 0;
    for (int y = 0; y < side; ++y) {
      for (int x = 0; x < side; ++x) {
        const QRgb pixel = image.pixel(x, y);
        light += qAlpha(pixel) == 255 && qGray(pixel) > 200 ? 1 : 0;
        field += qAlpha(pixel) == 255 && qGray(pixel) < 130 ? 1 : 0;
      }
    }
    EXPECT_LT(qAlpha(image.pixel(0, 0)), 64) << name;  // round corners
    EXPECT_GE(light, side) << name;
    EXPECT_GT(field, side * side / 4) << name;
  }
}
INSTANTIATE_TEST_SUITE_P(EverySize, SymbolsDrawing, ::testing::ValuesIn(kTrayIconSides));

}  // namespace
}  // namespace lexwend::platform
