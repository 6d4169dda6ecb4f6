// SPDX-License-Identifier: MIT
#include <QApplication>
#include <QMenu>
#include <atomic>
#include <mutex>

#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

#include "platform/linux/tray/menu.h"
#include "platform/linux/tray/panel_color.h"
#include "platform/linux/tray/symbol_image.h"
#include "tests/linux/testing/private_desktop.h"

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
  /// Of the first opaque pixel of the largest icon.
  QRgb iconColor() {
    GVariant* pixmaps = property("IconPixmap");
    GVariant* bytes = nullptr;
    g_variant_get_child(pixmaps, g_variant_n_children(pixmaps) - 1, "(ii@ay)", nullptr, nullptr, &bytes);
    gsize size = 0;
    const auto* argb = static_cast<const guchar*>(g_variant_get_fixed_array(bytes, &size, 1));
    QRgb color = 0;
    for (gsize i = 0; i < size && color == 0; i += 4) {
      if (argb[i] == 0xff) color = qRgb(argb[i + 1], argb[i + 2], argb[i + 3]);
    }
    g_variant_unref(bytes);
    g_variant_unref(pixmaps);
    return color;
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
  QMenu& shown() { return std::dynamic_pointer_cast<LinuxMenu>(menu)->shown(); }
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
  fix->setTitle("תקן    ⌘F5");
  QMenu& own = std::dynamic_pointer_cast<LinuxMenu>(single)->shown();
  EXPECT_EQ(own.actions()[0]->text(), QString("תקן    ⌘F5"));
  EXPECT_EQ(own.grab().toImage(), drawn(QString("תקן    ") + QChar(0x2066) + "⌘F5" + QChar(0x2069)));
  EXPECT_NE(own.grab().toImage(), drawn("תקן    ⌘F5"));
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
  GVariant* pixmaps = panel.property("IconPixmap");
  EXPECT_EQ(g_variant_n_children(pixmaps), std::size(kTrayIconSides));
  g_variant_unref(pixmaps);

  panel.click();
  EXPECT_TRUE(pumpUntil([&] { return shown().isVisible(); }));
  panel.click();
  EXPECT_TRUE(pumpUntil([&] { return !shown().isVisible(); }));
}

TEST_F(Tray, itemsIconFollowsTheThemeWhereNoPanelCanBeLookedAt) {
  Panel panel;
  panel.appear();
  const auto item = bar.statusItem(kSquareStatusItemLength);
  const auto image = bar.symbolImage("keyboard", "Lexwend");
  image->setTemplate(true);
  item->setImage(image);
  ASSERT_TRUE(pumpUntil([&] { return !panel.item().empty(); }));
  const QPalette before = QApplication::palette();
  for (const QColor color : {QColor(0xfc, 0xfa, 0xf8), QColor(0x10, 0x20, 0x30)}) {
    QPalette theme = before;
    theme.setColor(QPalette::WindowText, color);
    QApplication::setPalette(theme);
    EXPECT_EQ(panel.iconColor(), color.rgb());
  }
  QApplication::setPalette(before);
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

TEST_P(SymbolsDrawing, takesTheColorOfThePanelAndLeavesNoEdgeCut) {
  const int side = GetParam();
  const QColor color(0xf2, 0x10, 0x20);
  for (const auto* name : {"keyboard", "keyboard.badge.ellipsis", "checkmark", "xmark"}) {
    const auto symbol = LinuxSymbolImage::named(name, "");
    symbol->setTemplate(true);
    const QImage image = symbol->rendered(side, color).convertToFormat(QImage::Format_ARGB32);
    int solid = 0;
    int visible = 0;
    for (int y = 0; y < side; ++y) {
      for (int x = 0; x < side; ++x) {
        const QRgb pixel = image.pixel(x, y);
        visible += qAlpha(pixel) > 127 ? 1 : 0;
        if (qAlpha(pixel) != 255) continue;
        ++solid;
        EXPECT_EQ(pixel, color.rgba());
      }
      EXPECT_LT(qAlpha(image.pixel(0, y)), 255) << name;
      EXPECT_LT(qAlpha(image.pixel(side - 1, y)), 255) << name;
    }
    EXPECT_GT(solid, 0) << name;
    EXPECT_GT(visible, side) << name;
  }
}
INSTANTIATE_TEST_SUITE_P(EverySize, SymbolsDrawing, ::testing::ValuesIn(kTrayIconSides));

TEST(PanelsColor, decidesBetweenALightAndADarkSymbol) {
  QImage panel(40, 20, QImage::Format_RGB32);
  panel.fill(QColor(40, 40, 40));
  EXPECT_GT(legibleOn(panel).lightness(), 200);
  panel.fill(QColor(230, 230, 230));
  EXPECT_LT(legibleOn(panel).lightness(), 60);
  for (int x = 0; x < 15; ++x) panel.setPixelColor(x, 3, Qt::black);  // letters on a light panel
  EXPECT_LT(legibleOn(panel).lightness(), 60);
}

TEST(PanelsColor, isLightForTheBarOfGnomeAndThatOfTheThemesTextElsewhere) {
  QPalette light;
  light.setColor(QPalette::WindowText, Qt::black);
  EXPECT_GT(usualForeground("ubuntu:GNOME", light).lightness(), 200);
  EXPECT_EQ(usualForeground("XFCE", light), QColor(Qt::black));
  EXPECT_EQ(usualForeground("", light), QColor(Qt::black));
}

}  // namespace
}  // namespace lexwend::platform
