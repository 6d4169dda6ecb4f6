// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

#include "platform/diagnosis.h"
#include "platform/host.h"
#include "platform/mac/accessibility.h"
#include "platform/mac/alerts.h"
#include "platform/mac/application.h"
#include "platform/mac/date_formatter.h"
#include "platform/mac/files.h"
#include "platform/mac/hot_key_service.h"
#include "platform/mac/input_sources.h"
#include "platform/mac/key_events.h"
#include "platform/mac/key_monitor.h"
#include "platform/mac/login_item.h"
#include "platform/mac/pasteboard.h"
#include "platform/mac/recorder_window.h"
#include "platform/mac/run_loop.h"
#include "platform/mac/running_applications.h"
#include "platform/mac/running_instance.h"
#include "platform/mac/secure_input.h"
#include "platform/mac/status_item.h"
#include "platform/mac/user_defaults.h"
#include "platform/mac/workspace.h"

namespace lexwend::platform::mac {

/// macOS 13 and later. Compiled, linked and executed against doubles; never run on macOS. A service does
/// nothing to the system before it is called: a self-test touches no window server.
class MacHost : public Host {
 public:
  InputSourceService& inputSourceService() override { return inputSourceService_; }
  Accessibility& accessibility() override { return accessibility_; }
  SecureInput& secureInput() override { return secureInput_; }
  KeyEvents& keyEvents() override { return keyEvents_; }
  HotKeyService& hotKeyService() override { return hotKeyService_; }
  StatusBar& statusBar() override { return statusBar_; }
  RecorderWindows& recorderWindows() override { return recorderWindows_; }
  KeyMonitor& keyMonitor() override { return keyMonitor_; }
  Alerts& alerts() override { return alerts_; }
  Workspace& workspace() override { return workspace_; }
  RunningApplications& runningApplications() override { return runningApplications_; }
  RunningInstance& runningInstance() override { return runningInstance_; }
  UserDefaults& standardUserDefaults() override { return standardUserDefaults_; }
  LoginItem& loginItem() override { return loginItem_; }
  RunLoop& runLoop() override { return runLoop_; }
  Application& application() override { return application_; }
  Files& files() override { return files_; }
  DateFormatters& dateFormatters() override { return dateFormatters_; }
  std::shared_ptr<Pasteboard> generalPasteboard() override { return generalPasteboard_; }
  Diagnosis& diagnosis() override { return diagnosis_; }

 private:
  MacInputSourceService inputSourceService_;
  MacAccessibility accessibility_;
  MacSecureInput secureInput_;
  MacKeyEvents keyEvents_;
  MacHotKeyService hotKeyService_;
  MacStatusBar statusBar_;
  MacRecorderWindows recorderWindows_;
  MacKeyMonitor keyMonitor_;
  MacAlerts alerts_;
  MacWorkspace workspace_;
  MacRunningApplications runningApplications_;
  MacRunningInstance runningInstance_;
  MacUserDefaults standardUserDefaults_;
  MacLoginItem loginItem_;
  MacRunLoop runLoop_;
  MacApplication application_;
  MacFiles files_;
  MacDateFormatters dateFormatters_;
  std::shared_ptr<MacPasteboard> generalPasteboard_ = std::make_shared<MacPasteboard>();
  Diagnosis diagnosis_;  // which has nothing to tell of macOS
};

}  // namespace lexwend::platform::mac
