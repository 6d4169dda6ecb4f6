// SPDX-License-Identifier: MIT
#include "platform/recorder_window.h"

#include <QAccessible>
#include <QApplication>
#include <QFontMetrics>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <array>
#include <cstring>
#include <vector>

#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

#include "platform/key_monitor.h"
#include "platform/linux/display/x11_connection.h"
#include "tests/linux/testing/private_desktop.h"

namespace lexwend::platform {
namespace {

using namespace std::chrono_literals;

LabelLook label(std::string text, Frame frame, TextAlignment alignment, double fontSize) {
  LabelLook look;
  look.text = std::move(text);
  look.frame = frame;
  look.alignment = alignment;
  look.fontSize = fontSize;
  return look;
}

RecorderWindowLook recorderLook() {
  RecorderWindowLook look;
  look.contentRect = {0, 0, 400, 210};
  look.title = "מקש קיצור";
  look.level = 3;
  look.centered = true;
  look.prompt =
      label("לחץ על צירוף המקשים שתרצה להפעיל בו את התיקון", {20, 170, 360, 20}, TextAlignment::right, 13);
  look.combination = label("", {20, 108, 360, 50}, TextAlignment::center, 30);
  look.combination.background = ColorRole::quaternaryLabel;
  look.combination.cornerRadius = 10;
  look.message = label("", {20, 56, 360, 44}, TextAlignment::right, 11);
  look.message.wraps = true;
  look.save = {"שמור", {20, 14, 110, 32}};
  look.cancel = {"ביטול", {136, 14, 110, 32}};
  return look;
}

struct Recorder : ::testing::Test {
  LinuxHost& host = PrivateDesktop::shared().host();
  std::string events;
  std::unique_ptr<RecorderWindow> window;

  void open(RecorderWindowEvents callbacks) {
    window = host.recorderWindows().create(recorderLook(), std::move(callbacks));
    window->showAndMakeKey();
    ASSERT_TRUE(pumpUntil([&] { return QApplication::activeWindow() != nullptr; }));
  }
  void open() {
    open({[this] { events += 's'; }, [this] { events += 'c'; }, [this] { events += 'w'; }});
  }
  static QWidget& shown() { return *QApplication::activeWindow(); }
  static QPushButton& button(const QString& title) {
    for (auto* candidate : shown().findChildren<QPushButton*>()) {
      if (candidate->text() == title) return *candidate;
    }
    throw std::runtime_error("no such button");
  }
  /// What an event loop deletes later is deleted now; a test runs none.
  static bool windowsAreGone() {
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    return QApplication::topLevelWidgets().isEmpty();
  }
  void TearDown() override {
    window.reset();
    ASSERT_TRUE(pumpUntil(&Recorder::windowsAreGone));
  }
};

TEST_F(Recorder, standsWhereTheLookPutsItCountedFromTheBottom) {
  open();
  EXPECT_EQ(shown().size(), QSize(400, 210));
  EXPECT_EQ(shown().windowTitle(), QString("מקש קיצור"));
  EXPECT_EQ(button("שמור").geometry(), QRect(20, 164, 110, 32));
  EXPECT_EQ(button("ביטול").geometry(), QRect(136, 164, 110, 32));
  EXPECT_TRUE(shown().windowFlags().testFlag(Qt::WindowStaysOnTopHint));
  EXPECT_EQ(shown().minimumSize(), shown().maximumSize());
}

/// Whether another program can take the keyboard now; it gives it back at once.
bool keyboardIsFree() {
  const auto x11 = X11Connection::open();
  const XcbReply<xcb_grab_keyboard_reply_t> reply(
      xcb_grab_keyboard_reply(x11->get(),
                              xcb_grab_keyboard(x11->get(), 0, x11->root(), XCB_CURRENT_TIME,
                                                XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
                              nullptr));
  return reply != nullptr && reply->status == XCB_GRAB_STATUS_SUCCESS;
}

TEST_F(Recorder, holdsTheKeyboardUntilItCloses) {
  open();
  EXPECT_TRUE(pumpUntil([] { return !keyboardIsFree(); }));
  window->close();
  EXPECT_TRUE(pumpUntil([] { return keyboardIsFree(); }));
}

TEST_F(Recorder, givesTheKeyboardBackWhenItIsDestroyed) {
  open();
  ASSERT_TRUE(pumpUntil([] { return !keyboardIsFree(); }));
  window.reset();
  EXPECT_TRUE(pumpUntil([] { return keyboardIsFree(); }));
}

TEST_F(Recorder, givesTheKeyboardBackWhenAnotherWindowIsActive) {
  open();
  ASSERT_TRUE(pumpUntil([] { return !keyboardIsFree(); }));
  {
    QWidget other;
    other.show();
    other.activateWindow();
    EXPECT_TRUE(pumpUntil([] { return keyboardIsFree(); }));
  }
  window->showAndMakeKey();
  EXPECT_TRUE(pumpUntil([] { return !keyboardIsFree(); }));
}

TEST_F(Recorder, takesTheKeyboardAsSoonAsTheDesktopGivesItBack) {
  const auto desktop = X11Connection::open();
  const XcbReply<xcb_grab_keyboard_reply_t> held(
      xcb_grab_keyboard_reply(desktop->get(),
                              xcb_grab_keyboard(desktop->get(), 1, desktop->root(), XCB_CURRENT_TIME,
                                                XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
                              nullptr));
  open();
  xcb_ungrab_keyboard(desktop->get(), XCB_CURRENT_TIME);
  desktop->flush();
  EXPECT_TRUE(pumpUntil([] { return !keyboardIsFree(); }));
}

TEST_F(Recorder, asksTheWindowManagerForNoOtherButtonThanTheCloseBox) {
  open();
  const auto x11 = X11Connection::open();
  const auto hints = x11->property(static_cast<xcb_window_t>(shown().winId()), x11->atom("_MOTIF_WM_HINTS"));
  ASSERT_TRUE(hints.has_value());
  ASSERT_GE(hints->size(), 3 * sizeof(std::uint32_t));
  std::array<std::uint32_t, 3> values{};  // which follow, functions, decorations
  std::memcpy(values.data(), hints->data(), sizeof(values));
  constexpr std::uint32_t kBothFollow = 3;
  constexpr std::uint32_t kMinimizeFunction = 8;
  constexpr std::uint32_t kMaximizeFunction = 16;
  constexpr std::uint32_t kCloseFunction = 32;
  constexpr std::uint32_t kMinimizeButton = 32;
  constexpr std::uint32_t kMaximizeButton = 64;
  EXPECT_EQ(values[0] & kBothFollow, kBothFollow);
  EXPECT_EQ(values[1] & (kMinimizeFunction | kMaximizeFunction | kCloseFunction), kCloseFunction);
  EXPECT_EQ(values[2] & (kMinimizeButton | kMaximizeButton), 0U);
}

TEST_F(Recorder, showsEveryTextCompletely) {
  open();
  for (const auto* text :
       {"הצירוף הנוכחי. מקש F לבד, או מקש אחר יחד עם ⌘, ⌃ או ⌥. במקלדת מק, מקשי F נלחצים עם מקש הגלובוס.",
        "מקש רגיל לבד יחסום את ההקלדה שלו בכל המחשב. הוסף ⌘, ⌃ או ⌥, או בחר מקש F.",
        "הצירוף ⌃⌥⇧⌘ABCDEFGH שמור למערכת (העתקה, הדבקה, סגירה וכדומה). בחר צירוף אחר."}) {
    window->setMessage(text, ColorRole::systemRed);
    window->setCombination("⌃⌥⇧⌘F19 and something far too long for one line");
    int labels = 0;
    for (auto* label : shown().findChildren<QLabel*>()) {
      const QSize taken = QFontMetrics(label->font()).size(0, label->text());
      EXPECT_LE(taken.width(), label->width()) << label->text().toStdString();
      EXPECT_LE(taken.height(), label->height()) << label->text().toStdString();
      ++labels;
      if (label->accessibleName() != QString(text)) continue;
      EXPECT_EQ(QString(label->text()).replace('\n', ' '), QString(text));
      EXPECT_EQ(label->layoutDirection(), Qt::RightToLeft);
      EXPECT_TRUE(label->alignment().testFlag(Qt::AlignRight));
    }
    EXPECT_EQ(labels, 3);
  }
}

TEST_F(Recorder, drawsACombinationInItsOrderAndLeavesItsTextAsItIs) {
  open();
  const auto drawn = [](const QString& accessibleName) {
    for (const auto* label : shown().findChildren<QLabel*>()) {
      if (label->accessibleName() == accessibleName) return QString(label->text()).replace('\n', ' ');
    }
    return QString("no such text");
  };
  const QString isolated = QChar(0x2066) + QString("Ctrl+,") + QChar(0x2069);
  window->setCombination("Ctrl+,");
  window->setMessage("הצירוף Ctrl+, שמור למערכת.", ColorRole::systemRed);
  EXPECT_EQ(drawn("Ctrl+,"), isolated);
  EXPECT_EQ(drawn("הצירוף Ctrl+, שמור למערכת."), "הצירוף " + isolated + " שמור למערכת.");
  window->setCombination(",");
  window->setMessage("הוסף Ctrl, Super או Alt, או בחר מקש F.", ColorRole::systemRed);
  EXPECT_EQ(drawn("הוסף Ctrl, Super או Alt, או בחר מקש F."),
            QString("הוסף Ctrl, Super או Alt, או בחר מקש F."));
}

TEST_F(Recorder, isADialogWhoseCombinationHasTheFocus) {
  open();
  EXPECT_EQ(QAccessible::queryAccessibleInterface(&shown())->role(), QAccessible::Dialog);
  window->setCombination("Ctrl+Alt+K");
  ASSERT_NE(shown().focusWidget(), nullptr);
  EXPECT_EQ(shown().focusWidget()->accessibleName(), QString("Ctrl+Alt+K"));
}

TEST_F(Recorder, describesTheFocusByItsMessage) {
  open();
  window->setCombination("Ctrl+C");
  window->setMessage("הצירוף Ctrl+C שמור למערכת.", ColorRole::systemRed);
  ASSERT_NE(shown().focusWidget(), nullptr);
  EXPECT_EQ(shown().focusWidget()->accessibleDescription(), QString("הצירוף Ctrl+C שמור למערכת."));
}

TEST_F(Recorder, takesTheColorsOfAnotherThemeWhileItIsOpen) {
  open();
  window->setMessage("א", ColorRole::systemRed);
  const QPalette before = QApplication::palette();
  const auto colors = [] {
    std::vector<QColor> found;
    for (const auto* label : shown().findChildren<QLabel*>()) {
      found.push_back(label->palette().color(QPalette::WindowText));
    }
    return found;
  };
  const auto redOn = [&](const QColor& background, const QColor& text) {
    QPalette theme = before;
    theme.setColor(QPalette::Window, background);
    theme.setColor(QPalette::WindowText, text);
    QApplication::setPalette(theme);
    EXPECT_TRUE(pumpUntil([&] { return colors()[0] == text && colors()[1] == text; }));
    return colors()[2];
  };
  const QColor onDark = redOn(QColor(0x20, 0x20, 0x20), QColor(0xfa, 0xfa, 0xfa));
  const QColor onLight = redOn(QColor(0xf0, 0xf0, 0xf0), QColor(0x10, 0x10, 0x10));
  EXPECT_GT(onDark.lightness(), onLight.lightness());
  QApplication::setPalette(before);
}

TEST_F(Recorder, reportsItsButtons) {
  open();
  window->setSaveEnabled(false);
  button("שמור").click();
  EXPECT_EQ(events, "");
  window->setSaveEnabled(true);
  button("שמור").click();
  button("ביטול").click();
  EXPECT_EQ(events, "sc");
}

TEST_F(Recorder, reportsItsCloseOnceWhoeverCloses) {
  open();
  QWidget& widget = shown();
  widget.close();  // what the close box does
  EXPECT_EQ(events, "w");
  window->close();
  EXPECT_EQ(events, "w");
  EXPECT_FALSE(widget.isVisible());
}

TEST_F(Recorder, reportsACloseThatItsOwnerAskedForBeforeCloseReturns) {
  open();
  window->close();
  EXPECT_EQ(events, "w");
}

struct KeysOfTheRecorder : Recorder {
  Typist typist;
  std::vector<KeyDownEvent> seen;
  Registration monitor;

  void SetUp() override {
    open();
    monitor = host.keyMonitor().addLocalKeyDownMonitor([this](const KeyDownEvent& event) {
      seen.push_back(event);
      return KeyDisposition::consumed;
    });
    for (const int key : {KEY_LEFTSHIFT, KEY_LEFTCTRL, KEY_LEFTALT, KEY_LEFTMETA}) typist.release(key);
  }
  void TearDown() override {
    monitor.cancel();
    Recorder::TearDown();
  }
  /// Taps the last key while the others are held.
  void press(const std::vector<int>& keys) {
    for (const int key : keys) typist.press(key);
    for (auto key = keys.rbegin(); key != keys.rend(); ++key) typist.release(*key);
  }
  void expectNext(KeyCode keyCode, EventFlags flags) {
    ASSERT_TRUE(pumpUntil([&] { return !seen.empty(); }));
    EXPECT_EQ(seen.front().keyCode, keyCode);
    EXPECT_EQ(seen.front().modifierFlags, flags);
    seen.erase(seen.begin());
  }
};

TEST_F(KeysOfTheRecorder, arriveAsMacKeyCodesAndFlags) {
  press({KEY_F5});
  expectNext(kKeyF5, kEventFlagSecondaryFn);
  press({KEY_ESC});
  expectNext(kKeyEscape, kNoEventFlags);
  press({KEY_ENTER});
  expectNext(kKeyReturn, kNoEventFlags);
  press({KEY_TAB});
  expectNext(kKeyTab, kNoEventFlags);
  press({KEY_LEFTSHIFT, KEY_TAB});
  expectNext(kKeyTab, kEventFlagShift);
  press({KEY_LEFTCTRL, KEY_Q});
  expectNext(KeyCode{12}, kEventFlagCommand);
  press({KEY_LEFTALT, KEY_F});
  expectNext(KeyCode{3}, kEventFlagOption);
  press({KEY_LEFTALT, KEY_F4});
  expectNext(kKeyF4, kEventFlagOption | kEventFlagSecondaryFn);
  press({KEY_LEFTMETA, KEY_LEFTSHIFT, KEY_SPACE});
  expectNext(kKeySpace, kEventFlagControl | kEventFlagShift);
  EXPECT_TRUE(shown().isVisible());
  EXPECT_EQ(events, "");
}

TEST_F(KeysOfTheRecorder, areNoEventsWhenTheyAreModifiersAlone) {
  for (const int key :
       {KEY_LEFTSHIFT, KEY_RIGHTCTRL, KEY_LEFTALT, KEY_LEFTMETA, KEY_CAPSLOCK, KEY_CAPSLOCK}) {
    press({key});
  }
  press({KEY_F1});
  expectNext(kKeyF1, kEventFlagSecondaryFn);
}

TEST_F(KeysOfTheRecorder, areNoEventsWhenAModifierSwitchesTheLayout) {
  for (const auto* option : {"grp:alt_shift_toggle", "grp:ctrl_shift_toggle", "grp:caps_toggle"}) {
    ASSERT_EQ(
        runProgram(std::string("setxkbmap -rules evdev -model pc105 -layout us,il -option '' -option ") +
                   option),
        0);
    press({KEY_LEFTALT, KEY_LEFTSHIFT});
    press({KEY_LEFTSHIFT, KEY_LEFTALT});
    press({KEY_LEFTCTRL, KEY_RIGHTSHIFT});
    press({KEY_CAPSLOCK});
    press({KEY_CAPSLOCK});
    press({KEY_F1});
    expectNext(kKeyF1, kEventFlagSecondaryFn);
    EXPECT_TRUE(seen.empty());
  }
  EXPECT_EQ(runProgram("setxkbmap -rules evdev -model pc105 -layout us -option ''"), 0);
}

TEST_F(KeysOfTheRecorder, pressNoButtonWhenAMacKeyboardHasNoneSuch) {
  button("ביטול").setFocus();
  // A Print key that the layout has made a blank.
  ASSERT_EQ(runProgram("xmodmap -e 'keycode 107 = space'"), 0);
  press({KEY_SYSRQ});
  press({KEY_F1});
  expectNext(kKeyF1, kEventFlagSecondaryFn);
  EXPECT_TRUE(seen.empty());
  EXPECT_EQ(events, "");
  EXPECT_EQ(runProgram("xmodmap -e 'keycode 107 = Print'"), 0);
}

TEST_F(KeysOfTheRecorder, belongToAMenuThatIsOpen) {
  QMenu menu;
  menu.addAction("a");
  menu.popup({0, 0});
  ASSERT_TRUE(pumpUntil([&] { return menu.isVisible() && QApplication::activePopupWidget() == &menu; }));
  press({KEY_ESC});
  EXPECT_TRUE(pumpUntil([&] { return !menu.isVisible(); }));
  EXPECT_TRUE(seen.empty());
}

TEST_F(KeysOfTheRecorder, areSeenNoMoreAfterTheHandlerRemovedItsMonitor) {
  monitor = host.keyMonitor().addLocalKeyDownMonitor([this](const KeyDownEvent& event) {
    seen.push_back(event);
    monitor.cancel();
    return KeyDisposition::consumed;
  });
  button("ביטול").setFocus();
  press({KEY_F1});
  expectNext(kKeyF1, kEventFlagSecondaryFn);
  press({KEY_SPACE});
  EXPECT_TRUE(pumpUntil([&] { return events == "c"; }));
  EXPECT_TRUE(seen.empty());
}

}  // namespace
}  // namespace lexwend::platform
