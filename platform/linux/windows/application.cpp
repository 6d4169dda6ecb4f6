// SPDX-License-Identifier: MIT
#include "platform/linux/windows/application.h"

#include <QApplication>
#include <QSessionManager>
#include <QTimer>
#include <QWidget>
#include <array>
#include <csignal>
#include <vector>

#include <glib-unix.h>

#include "platform/linux/display/x11_connection.h"
#include "platform/linux/session/identity.h"
#include "platform/linux/session/session_notice.h"
#include "platform/linux/tray/symbol_image.h"

namespace lexwend::platform {
namespace {

constexpr std::array kEndingSignals = {SIGTERM, SIGINT, SIGHUP};

bool x11DisplayOpens() {
  int screenNumber = 0;
  return connectToDisplay(screenNumber) != nullptr;
}

/// As nohup leaves SIGHUP for the programs that it starts.
bool isIgnored(int number) {
  struct sigaction action {};
  return ::sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

gboolean endByASignal(gpointer application) {
  static_cast<LinuxApplication*>(application)->terminate();
  return G_SOURCE_CONTINUE;
}

}  // namespace

LinuxApplication::LinuxApplication(Needs needs) : needs_(std::move(needs)) {}
LinuxApplication::~LinuxApplication() = default;

std::optional<std::string> LinuxApplication::bundleIdentifier() {
  return std::string(kIdentifier);
}

std::string LinuxApplication::displayName() {
  return std::string(kDisplayName);
}

std::optional<std::string> LinuxApplication::shortVersionString() {
  return LEXWEND_VERSION;
}

std::optional<std::string> LinuxApplication::takeSharedApplication() {
  if (application_ != nullptr) return std::nullopt;
  // Qt ends the process where it finds no display.
  if (!x11DisplayOpens()) {
    const SessionNotice& reason = sessionIsWayland() ? kWaylandOnly : kNoDisplay;
    notifyUser(reason.hebrew);
    return std::string(reason.english);
  }
  qunsetenv("QT_NO_GLIB");  // deferred work and every service live in GLib's main context
  QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
  QCoreApplication::setApplicationName(QString::fromLatin1(kDisplayName.data(), kDisplayName.size()));
  QCoreApplication::setApplicationVersion(LEXWEND_VERSION);
  QGuiApplication::setDesktopFileName(QString::fromLatin1(kIdentifier.data(), kIdentifier.size()));
  // As arguments, since what is set in the environment would be inherited by the programs that the agent
  // starts.
  static char programName[] = "lexwend";
  static char platformOption[] = "-platform";
  static char platform[] = "xcb";
  static char* arguments[] = {programName, platformOption, platform, nullptr};
  static int argumentCount = 3;
  application_ = std::make_unique<QApplication>(argumentCount, arguments);
  QGuiApplication::setLayoutDirection(Qt::RightToLeft);
  QGuiApplication::setWindowIcon(applicationIcon());
  QGuiApplication::setQuitOnLastWindowClosed(false);
  // The autostart entry starts the agent again, not the session manager as well.
  const auto neverRestart = [](QSessionManager& manager) {
    manager.setRestartHint(QSessionManager::RestartNever);
  };
  QObject::connect(application_.get(), &QGuiApplication::commitDataRequest, application_.get(), neverRestart,
                   Qt::DirectConnection);
  QObject::connect(application_.get(), &QGuiApplication::saveStateRequest, application_.get(), neverRestart,
                   Qt::DirectConnection);
  if (sessionIsWayland()) notifyUser(kWaylandWithX11.hebrew);
  return std::nullopt;
}

std::optional<std::string> LinuxApplication::notice() {
  if (!sessionIsWayland()) return std::nullopt;
  return std::string(kWaylandWithX11.english);
}

void LinuxApplication::setDelegate(std::function<void()> didFinishLaunching) {
  didFinishLaunching_ = std::move(didFinishLaunching);
}

void LinuxApplication::setActivationPolicy(ActivationPolicy) {}

void LinuxApplication::run() {
  std::vector<guint> sources;
  for (const int number : kEndingSignals) {
    if (!isIgnored(number)) sources.push_back(g_unix_signal_add(number, &endByASignal, this));
  }
  // From within the loop, where terminate() counts.
  QTimer::singleShot(0, application_.get(), [this] {
    if (didFinishLaunching_) didFinishLaunching_();
  });
  QApplication::exec();
  // Hidden, not closed: closing a window would be answered by work that the end makes vain.
  for (QWidget* window : QApplication::topLevelWidgets()) window->hide();
  needs_.finishWork();
  for (const guint source : sources) g_source_remove(source);
}

void LinuxApplication::terminate() {
  QCoreApplication::exit();  // quit() would close the windows first
}

void LinuxApplication::activate(bool) {
  for (QWidget* window : QApplication::topLevelWidgets()) {
    if (!window->isVisible() || window->windowType() == Qt::Popup) continue;
    window->raise();
    // The toolkit would ask as of the last event that it got, which is no longer granted once the user has
    // been in another application.
    if (const auto x11 = needs_.x11()) x11->activate(static_cast<xcb_window_t>(window->winId()));
  }
}

void LinuxApplication::beep() {
  if (application_ != nullptr) QApplication::beep();
}

}  // namespace lexwend::platform
