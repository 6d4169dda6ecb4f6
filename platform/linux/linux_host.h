// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <mutex>
#include <optional>

#include "platform/host.h"
#include "platform/linux/accessibility/accessibility.h"
#include "platform/linux/accessibility/secure_input.h"
#include "platform/linux/clipboard/pasteboard.h"
#include "platform/linux/diagnosis/diagnosis.h"
#include "platform/linux/display/x11_connection.h"
#include "platform/linux/gnome/hot_key_service.h"
#include "platform/linux/gnome/input_sources.h"
#include "platform/linux/gnome/remote_desktop.h"
#include "platform/linux/gnome/shell.h"
#include "platform/linux/instance/running_applications.h"
#include "platform/linux/instance/running_instance.h"
#include "platform/linux/keyboard/hot_key_service.h"
#include "platform/linux/keyboard/input_sources.h"
#include "platform/linux/keyboard/key_events.h"
#include "platform/linux/kwin/hot_key_service.h"
#include "platform/linux/kwin/input_sources.h"
#include "platform/linux/kwin/kwin.h"
#include "platform/linux/session/buses.h"
#include "platform/linux/session/date_formatter.h"
#include "platform/linux/session/files.h"
#include "platform/linux/session/login_item.h"
#include "platform/linux/session/run_loop.h"
#include "platform/linux/session/user_defaults.h"
#include "platform/linux/session/workspace.h"
#include "platform/linux/sway/hot_key_service.h"
#include "platform/linux/sway/input_sources.h"
#include "platform/linux/sway/ipc.h"
#include "platform/linux/tray/status_item.h"
#include "platform/linux/wayland/key_events.h"
#include "platform/linux/windows/alerts.h"
#include "platform/linux/windows/application.h"
#include "platform/linux/windows/key_monitor.h"
#include "platform/linux/windows/recorder_window.h"

namespace lexwend::platform {

/// The desktop: an X11 display, or the compositor sway or KWin of Wayland where that is there and offers what
/// the services need; its X11 windows are windows like the others then. A connection, a file or a bus is
/// opened when the service that needs it is first asked for. So a program that prints a report runs without a
/// display, a bus, a home or a writable disk.
class LinuxHost : public Host {
 public:
  LinuxHost() = default;
  ~LinuxHost() override = default;
  LinuxHost(const LinuxHost&) = delete;
  LinuxHost& operator=(const LinuxHost&) = delete;

  InputSourceService& inputSourceService() override;
  Accessibility& accessibility() override;
  SecureInput& secureInput() override;
  KeyEvents& keyEvents() override;
  HotKeyService& hotKeyService() override;
  StatusBar& statusBar() override;
  RecorderWindows& recorderWindows() override;
  KeyMonitor& keyMonitor() override;
  Alerts& alerts() override;
  Workspace& workspace() override;
  RunningApplications& runningApplications() override;
  RunningInstance& runningInstance() override;
  UserDefaults& standardUserDefaults() override;
  LoginItem& loginItem() override;
  RunLoop& runLoop() override;
  Application& application() override;
  Files& files() override;
  DateFormatters& dateFormatters() override;
  std::shared_ptr<Pasteboard> generalPasteboard() override;
  Diagnosis& diagnosis() override;

 private:
  /// The compositor; null where this is no session of sway, or one that offers less than the services need.
  const std::shared_ptr<SwayIpc>& sway();
  /// The compositor; null where this is no session of KWin.
  const std::shared_ptr<KWin>& kwin();
  /// GNOME Shell's extension, which need not be there; null where this is no session of mutter on Wayland.
  const std::shared_ptr<GnomeShell>& gnome();
  bool isWayland() { return sway() || kwin() || gnome(); }
  Selections selections();
  /// The connection that the services share; null without a display and where there is a compositor.
  const std::shared_ptr<X11Connection>& x11();
  /// The window that has the keyboard.
  GnomeHotKeyService& gnomeHotKeyService();
  bool hotKeyCanCome();
  std::optional<FrontWindow> frontWindow();
  std::optional<std::uint32_t> frontProcess();
  std::optional<std::string> frontWindowClass();
  void focusOwnWindow();
  bool screenIsLocked();
  void playKey(KeyCode key, EventFlags flags);
  LinuxAccessibility::Display displayOfAccessibility();
  const std::shared_ptr<LinuxPasteboard>& pasteboard();
  LinuxAccessibility& linuxAccessibility();
  LinuxRunLoop& linuxRunLoop();
  /// Ends the work of the program: no fix begins any more, and a fix that has begun puts the clipboard back.
  void finishWork();

  // Destroyed from the last to the first: deferred work goes before what it uses, grabs and held keys before
  // the clipboard is handed over, and the toolkit and the display at the end.
  std::optional<std::shared_ptr<SwayIpc>> sway_;
  std::optional<std::shared_ptr<KWin>> kwin_;
  std::optional<std::shared_ptr<GnomeShell>> gnome_;
  std::shared_ptr<MutterRemoteDesktop> mutter_;
  std::optional<std::shared_ptr<X11Connection>> x11_;
  LinuxFiles files_;
  LinuxDateFormatters dateFormatters_;
  std::once_flag userDefaultsMade_;  // any thread may be the first to ask
  std::optional<LinuxUserDefaults> userDefaults_;
  std::optional<LinuxLoginItem> loginItem_;
  LinuxRunningApplications runningApplications_;
  std::optional<LinuxApplication> application_;
  std::shared_ptr<LinuxPasteboard> pasteboard_;
  std::optional<LinuxInputSources> inputSources_;
  std::optional<SwayInputSources> swayInputSources_;
  std::optional<KWinInputSources> kwinInputSources_;
  std::optional<GnomeInputSources> gnomeInputSources_;
  std::optional<LinuxAccessibility> accessibility_;
  BusObservation sessionBus_;
  std::optional<LinuxSecureInput> secureInput_;
  std::optional<LinuxWorkspace> workspace_;
  LinuxAlerts alerts_;
  LinuxKeyMonitor keyMonitor_;
  LinuxRecorderWindows recorderWindows_;
  std::optional<LinuxStatusBar> statusBar_;
  std::optional<LinuxRunningInstance> runningInstance_;
  std::optional<LinuxKeyEvents> keyEvents_;
  std::optional<WaylandKeyEvents> waylandKeyEvents_;
  std::optional<LinuxHotKeyService> hotKeyService_;
  std::optional<SwayHotKeyService> swayHotKeyService_;
  std::optional<KWinHotKeyService> kwinHotKeyService_;
  std::optional<GnomeHotKeyService> gnomeHotKeyService_;
  std::optional<LinuxDiagnosis> diagnosis_;
  std::optional<LinuxRunLoop> runLoop_;
};

}  // namespace lexwend::platform
