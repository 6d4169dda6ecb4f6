// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <mutex>

#include "platform/accessibility.h"
#include "platform/alerts.h"
#include "platform/application.h"
#include "platform/date_formatter.h"
#include "platform/diagnosis.h"
#include "platform/files.h"
#include "platform/host.h"
#include "platform/hot_key_service.h"
#include "platform/input_sources.h"
#include "platform/key_events.h"
#include "platform/key_monitor.h"
#include "platform/login_item.h"
#include "platform/pasteboard.h"
#include "platform/recorder_window.h"
#include "platform/run_loop.h"
#include "platform/running_applications.h"
#include "platform/secure_input.h"
#include "platform/status_item.h"
#include "platform/user_defaults.h"
#include "platform/workspace.h"

namespace lexwend::platform::mac {

/// macOS 13 and later. Compiled, linked and executed against doubles; never run on macOS.
class MacHost : public Host {
 public:
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
  UserDefaults& standardUserDefaults() override;
  LoginItem& loginItem() override;
  RunLoop& runLoop() override;
  Application& application() override;
  Files& files() override;
  DateFormatters& dateFormatters() override;
  std::shared_ptr<Pasteboard> generalPasteboard() override;
  Diagnosis& diagnosis() override { return diagnosis_; }

 private:
  /// A service that every thread may be the first to ask for.
  template <typename Service>
  struct OnAnyThread {
    std::once_flag isMade;
    std::unique_ptr<Service> service;
  };

  std::unique_ptr<InputSourceService> inputSourceService_;
  std::unique_ptr<Accessibility> accessibility_;
  std::unique_ptr<SecureInput> secureInput_;
  std::unique_ptr<KeyEvents> keyEvents_;
  std::unique_ptr<HotKeyService> hotKeyService_;
  std::unique_ptr<StatusBar> statusBar_;
  std::unique_ptr<RecorderWindows> recorderWindows_;
  std::unique_ptr<KeyMonitor> keyMonitor_;
  std::unique_ptr<Alerts> alerts_;
  std::unique_ptr<Workspace> workspace_;
  std::unique_ptr<RunningApplications> runningApplications_;
  OnAnyThread<UserDefaults> standardUserDefaults_;
  std::unique_ptr<LoginItem> loginItem_;
  std::unique_ptr<RunLoop> runLoop_;
  std::unique_ptr<Application> application_;
  OnAnyThread<Files> files_;
  OnAnyThread<DateFormatters> dateFormatters_;
  std::shared_ptr<Pasteboard> generalPasteboard_;
  Diagnosis diagnosis_;  // which has nothing to tell of macOS
};

}  // namespace lexwend::platform::mac
