// SPDX-License-Identifier: MIT
#include "platform/linux/windows/last_frames.h"

#include <QGuiApplication>
#include <QPlatformSurfaceEvent>
#include <QWindow>
#include <thread>

namespace lexwend::platform {
namespace {

bool tellsOfNewSurface(const QEvent& event) {
  return event.type() == QEvent::PlatformSurface &&
         static_cast<const QPlatformSurfaceEvent&>(event).surfaceEventType() ==
             QPlatformSurfaceEvent::SurfaceCreated;
}

/// Hears of each window when it gets its surface.
class LastFrames : public QObject {
 public:
  using QObject::QObject;

  bool eventFilter(QObject* object, QEvent* event) override {
    auto* window = qobject_cast<QWindow*>(object);
    if (window != nullptr && tellsOfNewSurface(*event)) await(*window);
    return QObject::eventFilter(object, event);
  }

 private:
  /// A window is told that it is no longer visible while it still has its surface.
  void await(QWindow& window) {
    QObject::disconnect(&window, &QWindow::visibleChanged, this, nullptr);
    QObject::connect(&window, &QWindow::visibleChanged, this, [](bool visible) {
      if (!visible) std::this_thread::sleep_for(kLastFrame);
    });
  }
};

}  // namespace

void hideWindowsAfterTheirLastFrame(QGuiApplication& application) {
  application.installEventFilter(new LastFrames(&application));
}

}  // namespace lexwend::platform
