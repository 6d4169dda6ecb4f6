// SPDX-License-Identifier: MIT
#include "platform/host.h"

#include <cstdio>
#include <cstdlib>

#include "platform/accessibility.h"
#include "platform/alerts.h"
#include "platform/application.h"
#include "platform/date_formatter.h"
#include "platform/diagnosis.h"
#include "platform/files.h"
#include "platform/hot_key_service.h"
#include "platform/input_sources.h"
#include "platform/key_events.h"
#include "platform/key_monitor.h"
#include "platform/login_item.h"
#include "platform/pasteboard.h"
#include "platform/recorder_window.h"
#include "platform/run_loop.h"
#include "platform/running_applications.h"
#include "platform/running_instance.h"
#include "platform/secure_input.h"
#include "platform/status_item.h"
#include "platform/user_defaults.h"
#include "platform/workspace.h"

namespace lexwend::platform {
namespace {

Host* current = nullptr;
std::uint64_t currentNumber = 0;

Host& installedHost() {
  if (current == nullptr) {
    std::fputs("lexwend: a service of the operating system was used while no host is installed\n", stderr);
    std::abort();
  }
  return *current;
}

}  // namespace

HostScope::HostScope(Host& host) : previous_(current), previousNumber_(currentNumber) {
  static std::uint64_t lastNumber = 0;
  current = &host;
  currentNumber = ++lastNumber;
}

HostScope::~HostScope() {
  current = previous_;
  currentNumber = previousNumber_;
}

std::uint64_t installedHostNumber() {
  return currentNumber;
}

InputSourceService& inputSourceService() {
  return installedHost().inputSourceService();
}
Accessibility& accessibility() {
  return installedHost().accessibility();
}
SecureInput& secureInput() {
  return installedHost().secureInput();
}
KeyEvents& keyEvents() {
  return installedHost().keyEvents();
}
HotKeyService& hotKeyService() {
  return installedHost().hotKeyService();
}
StatusBar& statusBar() {
  return installedHost().statusBar();
}
RecorderWindows& recorderWindows() {
  return installedHost().recorderWindows();
}
KeyMonitor& keyMonitor() {
  return installedHost().keyMonitor();
}
Alerts& alerts() {
  return installedHost().alerts();
}
Workspace& workspace() {
  return installedHost().workspace();
}
RunningApplications& runningApplications() {
  return installedHost().runningApplications();
}
RunningInstance& runningInstance() {
  return installedHost().runningInstance();
}
UserDefaults& standardUserDefaults() {
  return installedHost().standardUserDefaults();
}
LoginItem& loginItem() {
  return installedHost().loginItem();
}
RunLoop& runLoop() {
  return installedHost().runLoop();
}
Application& application() {
  return installedHost().application();
}
Files& files() {
  return installedHost().files();
}
DateFormatters& dateFormatters() {
  return installedHost().dateFormatters();
}
PasteboardRef generalPasteboard() {
  return installedHost().generalPasteboard();
}
Diagnosis& diagnosis() {
  return installedHost().diagnosis();
}

}  // namespace lexwend::platform
