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
class RunningInstance;
class UserDefaults;
class LoginItem;
class RunLoop;
class Application;
class Files;
class DateFormatters;
class Pasteboard;
class Diagnosis;

/// One operating system: the owner of all its services. A service is made when it is first asked for, so a
/// program that needs no display never looks for one. The first call may block while the service connects to
/// the system. A service that cannot reach the system is made all the same; its header says what its calls
/// then return. Main thread only, except standardUserDefaults(), files() and dateFormatters(), which any
/// thread may call. Every function is pure: a host that passes on to another one cannot leave one out.
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
  virtual RunningInstance& runningInstance() = 0;
  virtual UserDefaults& standardUserDefaults() = 0;
  virtual LoginItem& loginItem() = 0;
  virtual RunLoop& runLoop() = 0;
  virtual Application& application() = 0;
  virtual Files& files() = 0;
  virtual DateFormatters& dateFormatters() = 0;
  virtual std::shared_ptr<Pasteboard> generalPasteboard() = 0;
  virtual Diagnosis& diagnosis() = 0;
};

/// The host of this program. Each host defines this function once; linking chooses one of them.
std::unique_ptr<Host> makeHost();

/// Installs a host: the service accessors reach it from construction to destruction. Scopes nest. Without an
/// installed host an accessor stops the process. Construction and destruction happen on the main thread,
/// while no other thread reaches a service.
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

/// The number of the installed host; 0 without one. No two hosts of a process have the same number. What was
/// learnt from a host is valid while the number stays the same. Any thread.
std::uint64_t installedHostNumber();

}  // namespace lexwend::platform
