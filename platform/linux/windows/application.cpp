// SPDX-License-Identifier: MIT
#include "platform/linux/windows/application.h"

#include <QApplication>
#include <QFontDatabase>
#include <QSessionManager>
#include <QTimer>
#include <QWidget>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>

#include <glib-unix.h>
#include <sys/prctl.h>
#include <unistd.h>

#include "platform/linux/display/x11_connection.h"
#include "platform/linux/session/buses.h"
#include "platform/linux/session/end_request.h"
#include "platform/linux/session/identity.h"
#include "platform/linux/session/login_item.h"
#include "platform/linux/session/session_notice.h"
#include "platform/linux/tray/symbol_image.h"
#include "platform/linux/tray/toolkit.h"
#include "platform/linux/windows/accessible_application.h"
#include "platform/linux/windows/last_frames.h"

namespace lexwend::platform {
namespace {

bool x11DisplayOpens() {
  int screenNumber = 0;
  return connectToDisplay(screenNumber) != nullptr;
}

/// Ends the application once, as soon as its loop hears of a signal.
struct EndBySignal {
  Application& application;
  guint source = 0;

  static gboolean heard(gint /*descriptor*/, GIOCondition /*condition*/, gpointer data) {
    auto* self = static_cast<EndBySignal*>(data);
    self->source = 0;
    self->application.terminate();
    return G_SOURCE_REMOVE;  // the descriptor stays readable
  }
};

constexpr std::string_view kNoHebrewFont =
    "no font with Hebrew letters is installed, so the menu and the windows are empty; install one, such as "
    "fonts-dejavu-core";

constexpr const char* kBusVariable = "DBUS_SESSION_BUS_ADDRESS";

/// Whether one of Qt's threads that read from the compositor is running or about to run (proc(5)).
bool waylandThreadRuns() {
  std::error_code error;
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task", error)) {
    std::string status;
    std::getline(std::ifstream(task.path() / "stat"), status);
    if (status.find("(WaylandEventThr) R") != std::string::npos) return true;
  }
  return false;
}

/// Blocks until these threads sleep, for half a second at most. The destructor of Qt 6.4's plugin must not
/// begin before: a thread that has just been told to read then ends without having read, and the other one
/// waits for it for ever.
void letWaylandThreadsSettle() {
  constexpr std::chrono::milliseconds kLimit{500};
  constexpr std::chrono::milliseconds kLook{1};
  const auto end = std::chrono::steady_clock::now() + kLimit;
  while (waylandThreadRuns() && std::chrono::steady_clock::now() < end) std::this_thread::sleep_for(kLook);
}

}  // namespace

/// Hides the session bus from the toolkit, which asks it without a time limit and keeps the answer for the
/// whole run.
class LinuxApplication::HiddenBus {
 public:
  HiddenBus() {
    if (const char* address = std::getenv(kBusVariable)) address_ = address;
    ::setenv(kBusVariable, "unix:path=/nonexistent", 1);
  }
  ~HiddenBus() {
    if (address_) {
      ::setenv(kBusVariable, address_->c_str(), 1);
    } else {
      ::unsetenv(kBusVariable);
    }
  }
  HiddenBus(const HiddenBus&) = delete;
  HiddenBus& operator=(const HiddenBus&) = delete;

 private:
  std::optional<std::string> address_;
};

LinuxApplication::LinuxApplication(Needs needs) : needs_(std::move(needs)) {}
LinuxApplication::~LinuxApplication() {
  if (application_ != nullptr && needs_.isWayland()) letWaylandThreadsSettle();
}

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
  if (!needs_.isWayland() && !x11DisplayOpens()) {
    const SessionNotice& reason = sessionIsWayland() ? kWaylandOnly : kNoDisplay;
    notifyUser(reason.hebrew);
    return std::string(reason.english);
  }
  // What is selected and copied passes through this process. A limit on the size of core dumps would not keep
  // them from a program that the system pipes them to.
  ::prctl(PR_SET_DUMPABLE, 0);
  qunsetenv("QT_NO_GLIB");  // deferred work and every service live in GLib's main context
  QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
  QCoreApplication::setApplicationName(QString::fromLatin1(kDisplayName.data(), kDisplayName.size()));
  QCoreApplication::setApplicationVersion(LEXWEND_VERSION);
  QGuiApplication::setDesktopFileName(QString::fromLatin1(kIdentifier.data(), kIdentifier.size()));
  // Passed as arguments, because programs that the agent starts would inherit environment variables.
  static char programName[] = "lexwend";
  static char platformOption[] = "-platform";
  static char platformOfX[] = "xcb";
  static char platformsOfWayland[] = "wayland;xcb";  // the second where the first is not installed
  static char* arguments[] = {programName, platformOption,
                              needs_.isWayland() ? platformsOfWayland : platformOfX, nullptr};
  static int argumentCount = 3;
  if (sessionBus() == nullptr) busIsHidden_ = std::make_unique<HiddenBus>();
  showOpenMenusInAccessibilityTree();
  application_ = std::make_unique<QApplication>(argumentCount, arguments);
  if (toolkitIsOfWayland()) hideWindowsAfterTheirLastFrame(*application_);
  QGuiApplication::setLayoutDirection(Qt::RightToLeft);
  QGuiApplication::setWindowIcon(applicationIcon());
  QGuiApplication::setQuitOnLastWindowClosed(false);
  // The autostart entry starts the agent again. The session manager must not do so as well.
  const auto neverRestart = [](QSessionManager& manager) {
    manager.setRestartHint(QSessionManager::RestartNever);
  };
  QObject::connect(application_.get(), &QGuiApplication::commitDataRequest, application_.get(), neverRestart,
                   Qt::DirectConnection);
  QObject::connect(application_.get(), &QGuiApplication::saveStateRequest, application_.get(), neverRestart,
                   Qt::DirectConnection);
  if (const SessionNotice* limits = limit()) notifyUser(limits->hebrew);
  return std::nullopt;
}

const SessionNotice* LinuxApplication::limit() {
  if (needs_.isWayland() && !needs_.mayPressKeys()) return &kNoGrant;
  if (needs_.isWayland()) {
    const SessionLimit* limit = needs_.hotKeyLimit();
    return limit == nullptr ? nullptr : &limit->what;
  }
  return sessionIsWayland() ? &kWaylandWithX11 : nullptr;
}

std::optional<std::string> LinuxApplication::notice() {
  if (const SessionNotice* limits = limit()) return std::string(limits->english);
  if (QFontDatabase::families(QFontDatabase::Hebrew).isEmpty()) return std::string(kNoHebrewFont);
  return std::nullopt;
}

std::string LinuxApplication::limitation() {
  const SessionNotice* limits = limit();
  if (limits == nullptr) return {};
  std::string said(limits->hebrew);
  if (limits == &kNoGrant) said += " אפשר " + std::string(kHowToGetGrant.hebrew) + ".";
  return said;
}

bool LinuxApplication::install() {
  if (!needs_.writeEntry()) return false;
  startsAnew_ = true;
  terminate();
  return true;
}

void LinuxApplication::setDelegate(std::function<void()> didFinishLaunching) {
  didFinishLaunching_ = std::move(didFinishLaunching);
}

void LinuxApplication::setActivationPolicy(ActivationPolicy) {}

void LinuxApplication::run() {
  end_request::catchSignals();
  EndBySignal ending{*this};
  if (end_request::descriptor() >= 0) {
    ending.source = g_unix_fd_add(end_request::descriptor(), G_IO_IN, &EndBySignal::heard, &ending);
  }
  // From within the loop, because terminate() has no effect before it.
  QTimer::singleShot(0, application_.get(), [this] {
    busIsHidden_.reset();
    if (didFinishLaunching_) didFinishLaunching_();
  });
  QApplication::exec();
  // Hidden, not closed: the agent would react to a closed window with work that the end makes useless.
  for (QWidget* window : QApplication::topLevelWidgets()) window->hide();
  needs_.finishWork();
  if (ending.source != 0) g_source_remove(ending.source);
  if (!startsAnew_) return;
  // Every descriptor is closed by that. Without keys there was no fix that has left something on the
  // clipboard.
  const std::string program = LinuxLoginItem::ownProgram();
  ::execl(program.c_str(), program.c_str(), nullptr);
}

void LinuxApplication::terminate() {
  QCoreApplication::exit();  // quit() would close the windows first
}

void LinuxApplication::activate(bool) {
  for (QWidget* window : QApplication::topLevelWidgets()) {
    if (!window->isVisible() || window->windowType() == Qt::Popup) continue;
    window->raise();
    if (needs_.isWayland()) needs_.focusOwnWindow();
    // The toolkit would send the time of the last event that it got. The window manager refuses such a
    // request once the user has used another application.
    if (const auto x11 = needs_.x11()) x11->activate(static_cast<xcb_window_t>(window->winId()));
  }
}

void LinuxApplication::beep() {
  if (application_ != nullptr) QApplication::beep();
}

void LinuxApplication::notifyUser(std::string_view sentence) {
  platform::notifyUser(sentence);
}

}  // namespace lexwend::platform
