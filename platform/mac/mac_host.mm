// SPDX-License-Identifier: MIT
#include "platform/mac/mac_host.h"

#include "platform/mac/mac_services.h"

namespace lexwend::platform {
namespace mac {
namespace {

/// A service is made when it is first asked for: a self-test touches no window server.
template <typename Service>
Service& madeOnce(std::unique_ptr<Service>& owner, std::unique_ptr<Service> (*make)()) {
  if (owner == nullptr) owner = make();
  return *owner;
}

/// The same for an owner whose service may be asked for on any thread.
template <typename Owner, typename Service>
Service& madeOnAnyThread(Owner& owner, std::unique_ptr<Service> (*make)()) {
  std::call_once(owner.isMade, [&] { owner.service = make(); });
  return *owner.service;
}

}  // namespace

InputSourceService& MacHost::inputSourceService() {
  return madeOnce(inputSourceService_, makeInputSourceService);
}
Accessibility& MacHost::accessibility() { return madeOnce(accessibility_, makeAccessibility); }
SecureInput& MacHost::secureInput() { return madeOnce(secureInput_, makeSecureInput); }
KeyEvents& MacHost::keyEvents() { return madeOnce(keyEvents_, makeKeyEvents); }
HotKeyService& MacHost::hotKeyService() { return madeOnce(hotKeyService_, makeHotKeyService); }
StatusBar& MacHost::statusBar() { return madeOnce(statusBar_, makeStatusBar); }
RecorderWindows& MacHost::recorderWindows() { return madeOnce(recorderWindows_, makeRecorderWindows); }
KeyMonitor& MacHost::keyMonitor() { return madeOnce(keyMonitor_, makeKeyMonitor); }
Alerts& MacHost::alerts() { return madeOnce(alerts_, makeAlerts); }
Workspace& MacHost::workspace() { return madeOnce(workspace_, makeWorkspace); }
RunningApplications& MacHost::runningApplications() {
  return madeOnce(runningApplications_, makeRunningApplications);
}
UserDefaults& MacHost::standardUserDefaults() {
  return madeOnAnyThread(standardUserDefaults_, makeStandardUserDefaults);
}
LoginItem& MacHost::loginItem() { return madeOnce(loginItem_, makeLoginItem); }
RunLoop& MacHost::runLoop() { return madeOnce(runLoop_, makeRunLoop); }
Application& MacHost::application() { return madeOnce(application_, makeApplication); }
Files& MacHost::files() { return madeOnAnyThread(files_, makeFiles); }
DateFormatters& MacHost::dateFormatters() { return madeOnAnyThread(dateFormatters_, makeDateFormatters); }
std::shared_ptr<Pasteboard> MacHost::generalPasteboard() {
  if (generalPasteboard_ == nullptr) generalPasteboard_ = makeGeneralPasteboard();
  return generalPasteboard_;
}

}  // namespace mac

std::unique_ptr<Host> makeHost() { return std::make_unique<mac::MacHost>(); }

}  // namespace lexwend::platform
