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
#include "platform/linux/instance/running_applications.h"
#include "platform/linux/instance/running_instance.h"
#include "platform/linux/server/display_server.h"
#include "platform/linux/session/buses.h"
#include "platform/linux/session/date_formatter.h"
#include "platform/linux/session/files.h"
#include "platform/linux/session/login_item.h"
#include "platform/linux/session/run_loop.h"
#include "platform/linux/session/user_defaults.h"
#include "platform/linux/session/workspace.h"
#include "platform/linux/tray/status_item.h"
#include "platform/linux/windows/alerts.h"
#include "platform/linux/windows/application.h"
#include "platform/linux/windows/key_monitor.h"
#include "platform/linux/windows/recorder_window.h"

namespace lexwend::platform {

/// The desktop. A connection, a file or a bus is opened when the service that needs it is first asked for. So
/// a program that prints a report runs without a display, a bus, a home or a writable disk.
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
  DisplayServer& server();
  /// Why no press of the hot key can come; null when one can.
  const SessionLimit* hotKeyLimit();
  void playKey(KeyCode key, EventFlags flags);
  LinuxAccessibility::Display displayOfAccessibility();
  const std::shared_ptr<LinuxPasteboard>& pasteboard();
  LinuxAccessibility& linuxAccessibility();
  LinuxRunLoop& linuxRunLoop();
  /// Ends the work of the program: no fix begins any more, and a fix that has begun puts the clipboard back.
  void finishWork();

  // Destroyed from the last to the first: deferred work goes before what it uses, grabs and held keys before
  // the clipboard is handed over, and the toolkit and the display at the end.
  std::unique_ptr<DisplayServer> server_;
  LinuxFiles files_;
  LinuxDateFormatters dateFormatters_;
  std::once_flag userDefaultsMade_;  // any thread may be the first to ask
  std::optional<LinuxUserDefaults> userDefaults_;
  std::optional<LinuxLoginItem> loginItem_;
  LinuxRunningApplications runningApplications_;
  std::optional<LinuxApplication> application_;
  std::shared_ptr<LinuxPasteboard> pasteboard_;
  std::unique_ptr<InputSourceService> inputSources_;
  std::optional<LinuxAccessibility> accessibility_;
  BusObservation sessionBus_;
  std::optional<LinuxSecureInput> secureInput_;
  std::optional<LinuxWorkspace> workspace_;
  LinuxAlerts alerts_;
  LinuxKeyMonitor keyMonitor_;
  LinuxRecorderWindows recorderWindows_;
  std::optional<LinuxStatusBar> statusBar_;
  std::optional<LinuxRunningInstance> runningInstance_;
  std::unique_ptr<ShortcutKeyEvents> keyEvents_;
  std::unique_ptr<HotKeyKeeper> hotKeyService_;
  std::optional<LinuxDiagnosis> diagnosis_;
  std::optional<LinuxRunLoop> runLoop_;
};

}  // namespace lexwend::platform
