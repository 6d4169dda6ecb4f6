// SPDX-License-Identifier: MIT
#include "platform/linux/windows/last_frames.h"

#include <QAbstractButton>
#include <QApplication>
#include <QGuiApplication>
#include <QMessageBox>
#include <QWindow>
#include <optional>

#include <gtest/gtest.h>
#include <qpa/qplatformnativeinterface.h>

#include "platform/alerts.h"
#include "platform/recorder_window.h"
#include "tests/contract/host_under_test.h"

namespace lexwend::contract {
namespace {

using Clock = std::chrono::steady_clock;

void* surfaceOf(QWindow& window) {
  return QGuiApplication::platformNativeInterface()->nativeResourceForWindow("surface", &window);
}

/// The last moment in which a window that is being hidden has its surface. It hears of that after the agent's
/// own application, which has listened for longer.
struct LastMoment {
  explicit LastMoment(QWindow& window) {
    QObject::connect(&window, &QWindow::visibleChanged, &context, [this, &window](bool visible) {
      if (!visible && surfaceOf(window) != nullptr) at = Clock::now();
    });
  }
  std::optional<Clock::time_point> at;
  QObject context;
};

TEST(LastFrameOfWindow, isDrawnBeforeTheRecorderGoes) {
  const auto underTest = makeHostUnderTest();
  platform::RecorderWindowLook look;
  look.contentRect = {0, 0, 400, 210};
  const auto recorder = underTest->host().recorderWindows().create(look, {});
  // Hidden and shown again, because a window keeps what it was told when it got its first surface.
  for (int round = 0; round < 2; ++round) {
    recorder->showAndMakeKey();
    ASSERT_TRUE(underTest->waitUntil([] { return QApplication::activeWindow() != nullptr; }));
    QWidget& shown = *QApplication::activeWindow();
    shown.repaint();
    const LastMoment last(*shown.windowHandle());
    const auto told = Clock::now();
    recorder->close();
    ASSERT_TRUE(last.at) << "the surface had gone already";
    EXPECT_GE(*last.at - told, platform::kLastFrame);
    EXPECT_FALSE(shown.isVisible());
    ASSERT_TRUE(underTest->waitUntil([] { return QApplication::activeWindow() == nullptr; }));
  }
}

TEST(LastFrameOfWindow, isDrawnBeforeAnAlertGoes) {
  const auto underTest = makeHostUnderTest();
  std::optional<LastMoment> last;
  Clock::time_point told;
  underTest->answerNextAlert(0, [&] {
    const auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    if (box == nullptr || last) return last.has_value();
    last.emplace(*box->windowHandle());
    // Before the click, which closes the alert.
    QObject::connect(box->buttons().first(), &QAbstractButton::released, &last->context,
                     [&] { told = Clock::now(); });
    return true;
  });
  platform::Alert alert;
  alert.messageText = "message";
  alert.buttons = {"first"};
  EXPECT_EQ(underTest->host().alerts().runModal(alert), platform::kAlertFirstButtonReturn);
  ASSERT_TRUE(last && last->at) << "the surface had gone already";
  EXPECT_GE(*last->at - told, platform::kLastFrame);
}

}  // namespace
}  // namespace lexwend::contract
