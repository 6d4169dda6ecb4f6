// SPDX-License-Identifier: MIT
#include <QAbstractButton>
#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QWindow>
#include <csignal>
#include <cstdlib>

#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

#include "platform/alerts.h"
#include "platform/application.h"
#include "platform/key_monitor.h"
#include "platform/recorder_window.h"
#include "platform/workspace.h"
#include "tests/linux/testing/private_desktop.h"

namespace lexwend::platform {
namespace {

using namespace std::chrono_literals;

struct Desktop : ::testing::Test {
  LinuxHost& host = PrivateDesktop::shared().host();
};

struct AlertOnTheDesktop : Desktop {
  Typist typist;
  const Alert alert{"נדרש אישור נגישות",
                    "כדי לתקן טקסט מסומן, האפליקציה צריכה אישור לשלוט במחשב דרך הנגישות. האישור ניתן פעם אחת "
                    "בהגדרות המערכת. האפליקציה לא שומרת ולא שולחת שום הקלדה.",
                    {"פתח הגדרות", "ביטול"}};

  static QMessageBox* shown() { return qobject_cast<QMessageBox*>(QApplication::activeWindow()); }
  /// Runs the alert and, when it is there, the user's answer.
  int runWith(std::function<void(QMessageBox&)> answer) {
    Registration timer;
    timer = host.runLoop().scheduledRepeatingTimer(10ms, [&] {
      if (shown() == nullptr) return;
      timer.cancel();
      answer(*shown());
    });
    return host.alerts().runModal(alert);
  }
};

TEST_F(AlertOnTheDesktop, showsItsTextsRightToLeftAboveOtherWindows) {
  runWith([this](QMessageBox& box) {
    EXPECT_EQ(box.windowTitle(), QString("Lexwend"));
    EXPECT_EQ(box.text().toStdString(), alert.messageText);
    EXPECT_EQ(box.informativeText().toStdString(), alert.informativeText);
    EXPECT_EQ(box.layoutDirection(), Qt::RightToLeft);
    EXPECT_TRUE(box.windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    EXPECT_EQ(box.buttons().size(), 2);
    for (const auto* label : box.findChildren<QLabel*>()) {
      if (label->text().isEmpty()) continue;
      EXPECT_LE(label->heightForWidth(label->width()), label->height()) << label->text().toStdString();
    }
    box.close();
  });
}

TEST_F(AlertOnTheDesktop, isAnsweredByReturnWithTheFirstButton) {
  EXPECT_EQ(runWith([this](QMessageBox&) { typist.tap(KEY_ENTER); }), 1000);
}

TEST_F(AlertOnTheDesktop, isAnsweredByEscapeAndByItsCloseBoxWithTheLastButton) {
  EXPECT_EQ(runWith([this](QMessageBox&) { typist.tap(KEY_ESC); }), 1001);
  EXPECT_EQ(runWith([](QMessageBox& box) { box.close(); }), 1001);
}

TEST_F(AlertOnTheDesktop, leavesNoKeyAndNoClickToTheRecorderBehindIt) {
  RecorderWindowLook look;
  look.contentRect = {0, 0, 400, 210};
  std::unique_ptr<RecorderWindow> recorder = host.recorderWindows().create(look, {});
  recorder->showAndMakeKey();
  ASSERT_TRUE(pumpUntil([] { return QApplication::activeWindow() != nullptr; }));
  QWidget* behind = QApplication::activeWindow();
  int seen = 0;
  const auto monitor = host.keyMonitor().addLocalKeyDownMonitor([&](const KeyDownEvent&) {
    ++seen;
    return KeyDisposition::consumed;
  });
  EXPECT_EQ(runWith([&](QMessageBox& box) {
              EXPECT_EQ(QApplication::activeModalWidget(), &box);
              EXPECT_NE(behind, &box);
              EXPECT_TRUE(box.windowHandle()->modality() == Qt::ApplicationModal);
              typist.tap(KEY_ENTER);
            }),
            1000);
  EXPECT_EQ(seen, 0);
}

struct ApplicationOnTheDesktop : Desktop {
  Application& application = host.application();
  int launches = 0;

  void runWith(std::function<void()> launched) {
    application.setDelegate([this, launched] {
      ++launches;
      launched();
    });
    application.run();
  }
};

TEST_F(ApplicationOnTheDesktop, tellsProgramsThatItStartsNothingOfItsDisplay) {
  EXPECT_EQ(QGuiApplication::platformName(), QString("xcb"));
  EXPECT_FALSE(qEnvironmentVariableIsSet("QT_QPA_PLATFORM"));
}

TEST_F(ApplicationOnTheDesktop, endsByTheSystemsSignals) {
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
    runWith([signal] { ::raise(signal); });
  }
  EXPECT_EQ(launches, 3);
}

TEST_F(ApplicationOnTheDesktop, leavesASignalIgnoredThatItWasStartedToIgnore) {
  std::signal(SIGHUP, SIG_IGN);
  runWith([this] {
    struct sigaction action {};
    ::sigaction(SIGHUP, nullptr, &action);
    EXPECT_EQ(action.sa_handler, SIG_IGN);
    ::sigaction(SIGTERM, nullptr, &action);
    EXPECT_NE(action.sa_handler, SIG_IGN);
    application.terminate();
  });
  std::signal(SIGHUP, SIG_DFL);
}

TEST_F(ApplicationOnTheDesktop, putsThingsBackBeforeItEnds) {
  bool restored = false;
  runWith([&] {
    host.runLoop().dispatchAfter(60ms, [&] { restored = true; });
    application.terminate();
  });
  EXPECT_TRUE(restored);
}

TEST_F(ApplicationOnTheDesktop, windowsAndHotKeysGoAtItsEndBeforeTheLastWork) {
  int closes = 0;
  OSStatus before = kHotKeyInvalidErr;
  OSStatus after = kNoErr;
  int visible = 0;
  std::unique_ptr<RecorderWindow> window =
      host.recorderWindows().create({}, {.save = {}, .cancel = {}, .willClose = [&] { ++closes; }});
  runWith([&] {
    window->showAndMakeKey();
    before = host.hotKeyService().registerHotKey(kKeyF9, kNoModifiers, {}).status;
    application.terminate();
    host.runLoop().dispatchAfter(60ms, [&] {
      for (const QWidget* each : QApplication::topLevelWidgets()) visible += each->isVisible() ? 1 : 0;
      after = host.hotKeyService().registerHotKey(kKeyF10, kNoModifiers, {}).status;
    });
  });
  EXPECT_EQ(closes, 0);
  EXPECT_EQ(visible, 0);
  EXPECT_EQ(before, kNoErr);
  EXPECT_NE(after, kNoErr);
}

TEST_F(ApplicationOnTheDesktop, endsAlsoWhileAnAlertIsOpen) {
  int response = 0;
  runWith([&] {
    Registration timer;
    timer = host.runLoop().scheduledRepeatingTimer(10ms, [this, &timer] {
      if (QApplication::activeModalWidget() == nullptr) return;
      timer.cancel();
      application.terminate();
    });
    response = host.alerts().runModal({"a", "b", {"c", "d"}});
  });
  EXPECT_EQ(response, 1001);
}

struct WorkspaceOnTheDesktop : Desktop {
  Workspace& workspace = host.workspace();
  BusPeer peer;
};

TEST_F(WorkspaceOnTheDesktop, switchesAccessibilityOnWhereMacSettingsAreToBeOpened) {
  std::atomic<bool> switchedOn = false;
  peer.answer([&](const std::string& method, GVariant* arguments) -> GVariant* {
    const char* interface = nullptr;
    const char* name = nullptr;
    GVariant* value = nullptr;
    if (method != "Set") return nullptr;
    g_variant_get(arguments, "(&s&sv)", &interface, &name, &value);
    switchedOn = std::string(interface) == "org.a11y.Status" && std::string(name) == "IsEnabled" &&
                 g_variant_get_boolean(value) != FALSE;
    g_variant_unref(value);
    return g_variant_new("()");
  });
  peer.ownName("org.a11y.Bus");
  const auto url = workspace.urlFromString(
      "x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility");
  ASSERT_NE(url, nullptr);
  workspace.open(url);
  EXPECT_TRUE(pumpUntil([&] { return switchedOn.load(); }));
}

TEST_F(WorkspaceOnTheDesktop, takesNoTextThatIsNoUrl) {
  EXPECT_EQ(workspace.urlFromString(""), nullptr);
  EXPECT_EQ(workspace.urlFromString("no url"), nullptr);
  workspace.open(nullptr);
}

TEST_F(WorkspaceOnTheDesktop, namesTheApplicationThatHasTheKeyboardAndNoneWhereNoneHasIt) {
  {
    const FocusedWindow editor("Editor");
    ASSERT_TRUE(workspace.frontmostApplication().has_value());
    EXPECT_EQ(workspace.frontmostApplication()->bundleIdentifier, "Editor");
  }
  EXPECT_TRUE(pumpUntil([this] { return !workspace.frontmostApplication().has_value(); }));
}

}  // namespace
}  // namespace lexwend::platform
