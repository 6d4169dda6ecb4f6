// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>

namespace lexwend::platform {

class InputSourceService;
class Accessibility;
class SecureInput;
class KeyEvents;
class HotKeyService;
class StatusBar;
class RecorderWindows;
class KeyMonitor;
class Alerts;
class Workspace;
class RunningApplications;
class UserDefaults;
class LoginItem;
class RunLoop;
class Application;
class Files;
class DateFormatters;
class Pasteboard;

/// One operating system: the owner of all its services. A service is made when it is first asked for, so that
/// a program that needs no display never looks for one. The first call may block for as long as a connection
/// to the system takes. A service that cannot reach the system is still made, and answers as its header says.
/// Main thread only, except standardUserDefaults(), files() and dateFormatters(), which serve any thread.
class Host {
 public:
  virtual ~Host() = default;
  virtual InputSourceService& inputSourceService() = 0;
  virtual Accessibility& accessibility() = 0;
  virtual SecureInput& secureInput() = 0;
  virtual KeyEvents& keyEvents() = 0;
  virtual HotKeyService& hotKeyService() = 0;
  virtual StatusBar& statusBar() = 0;
  virtual RecorderWindows& recorderWindows() = 0;
  virtual KeyMonitor& keyMonitor() = 0;
  virtual Alerts& alerts() = 0;
  virtual Workspace& workspace() = 0;
  virtual RunningApplications& runningApplications() = 0;
  virtual UserDefaults& standardUserDefaults() = 0;
  virtual LoginItem& loginItem() = 0;
  virtual RunLoop& runLoop() = 0;
  virtual Application& application() = 0;
  virtual Files& files() = 0;
  virtual DateFormatters& dateFormatters() = 0;
  virtual std::shared_ptr<Pasteboard> generalPasteboard() = 0;
};

/// The host of this program. Declared once here, defined once by each host, chosen at link time, called by
/// the entry.
std::unique_ptr<Host> makeHost();

/// Makes a host the one that the service accessors reach, from construction to destruction; scopes nest.
/// Without one an accessor stops the process. Construction and destruction happen on the main thread, while
/// no other thread reaches a service.
class HostScope {
 public:
  explicit HostScope(Host& host);
  ~HostScope();
  HostScope(const HostScope&) = delete;
  HostScope& operator=(const HostScope&) = delete;

 private:
  Host* previous_;
  std::uint64_t previousNumber_;
};

/// The number of the installed host, which no other host of this process has; 0 without one. What was learnt
/// from a host is valid as long as the number stays the same. Any thread.
std::uint64_t installedHostNumber();

}  // namespace lexwend::platform
