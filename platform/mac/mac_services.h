// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

#include "platform/host.h"

/// One function for each service of the host. Each is defined in the file that is named after the service's
/// header. Main thread only, except user defaults, files and date formatters. A service does nothing to the
/// system before it is called.
namespace lexwend::platform::mac {

std::unique_ptr<InputSourceService> makeInputSourceService();
std::unique_ptr<Accessibility> makeAccessibility();
std::unique_ptr<SecureInput> makeSecureInput();
std::unique_ptr<KeyEvents> makeKeyEvents();
std::unique_ptr<HotKeyService> makeHotKeyService();
std::unique_ptr<StatusBar> makeStatusBar();
std::unique_ptr<RecorderWindows> makeRecorderWindows();
std::unique_ptr<KeyMonitor> makeKeyMonitor();
std::unique_ptr<Alerts> makeAlerts();
std::unique_ptr<Workspace> makeWorkspace();
std::unique_ptr<RunningApplications> makeRunningApplications();
std::unique_ptr<UserDefaults> makeStandardUserDefaults();
std::unique_ptr<LoginItem> makeLoginItem();
std::unique_ptr<RunLoop> makeRunLoop();
std::unique_ptr<Application> makeApplication();
std::unique_ptr<Files> makeFiles();
std::unique_ptr<DateFormatters> makeDateFormatters();
std::shared_ptr<Pasteboard> makeGeneralPasteboard();

}  // namespace lexwend::platform::mac
