// SPDX-License-Identifier: MIT
#include "platform/linux/linux_host.h"

#include <chrono>

#include "platform/linux/clipboard/reader.h"
#include "platform/linux/session/buses.h"

namespace lexwend::platform {
namespace {

/// The longest deferral that counts as part of a fix; the clipboard is put back half a second after it.
constexpr std::chrono::milliseconds kLastWork(1000);

/// For the services of the main thread.
template <typename Service, typename... Arguments>
Service& made(std::optional<Service>& service, Arguments&&... arguments) {
  if (!service) service.emplace(std::forward<Arguments>(arguments)...);
  return *service;
}

std::optional<std::string> readPrimarySelection() {
  constexpr std::chrono::milliseconds kTime{
      250};                                // as long as for any other question about the focused field
  constexpr std::size_t kMaxBytes = 4096;  // a masked entry holds a password, not a book
  const auto reader = ClipboardReader::open("PRIMARY");
  return reader ? reader->readText({kTime, kTime, kMaxBytes}) : std::nullopt;
}

LinuxAccessibility::Display displayOf(const std::shared_ptr<X11Connection>& x11) {
  return {
      .mayControl = [x11] { return x11 != nullptr && x11->hasXTest() && x11->hasXFixes() && x11->hasXkb(); },
      .frontProcess = [x11] { return x11 != nullptr ? x11->activeWindowProcess() : std::nullopt; },
      .primarySelection = [] { return readPrimarySelection(); },
  };
}

}  // namespace

InputSourceService& LinuxHost::inputSourceService() {
  return made(inputSources_, x11(), sessionBus);
}

Accessibility& LinuxHost::accessibility() {
  return linuxAccessibility();
}

SecureInput& LinuxHost::secureInput() {
  return made(secureInput_, &linuxAccessibility());
}

KeyEvents& LinuxHost::keyEvents() {
  // A clipboard too big or too slow to be kept must not be overwritten by a simulated copy. A terminal inside
  // another program's window is not known by the window's class. Where no copy is made, what another program
  // copies must not be taken for the selection.
  return made(
      keyEvents_, x11(),
      [this] { return !pasteboard()->isWithheld() && !linuxAccessibility().focusIsTerminal(); },
      [this] { pasteboard()->copyWasRefused(); });
}

HotKeyService& LinuxHost::hotKeyService() {
  return made(hotKeyService_, x11());
}

StatusBar& LinuxHost::statusBar() {
  return made(statusBar_,
              LinuxStatusBar::Needs{[this] { application().terminate(); }, [this] { return x11(); },
                                    [this]() -> RunLoop& { return runLoop(); }});
}

RecorderWindows& LinuxHost::recorderWindows() {
  return recorderWindows_;
}

KeyMonitor& LinuxHost::keyMonitor() {
  return keyMonitor_;
}

Alerts& LinuxHost::alerts() {
  return alerts_;
}

Workspace& LinuxHost::workspace() {
  return made(workspace_, [this] { return x11() != nullptr ? x11()->activeWindowClass() : std::nullopt; });
}

RunningApplications& LinuxHost::runningApplications() {
  return runningApplications_;
}

UserDefaults& LinuxHost::standardUserDefaults() {
  std::call_once(userDefaultsMade_, [this] { userDefaults_.emplace(LinuxUserDefaults::standardPath()); });
  return *userDefaults_;
}

LoginItem& LinuxHost::loginItem() {
  return made(loginItem_, LinuxLoginItem::standardPath(), LinuxLoginItem::ownProgram());
}

RunLoop& LinuxHost::runLoop() {
  return linuxRunLoop();
}

Application& LinuxHost::application() {
  return made(application_, LinuxApplication::Needs{[this] { finishWork(); }, [this] { return x11(); }});
}

Files& LinuxHost::files() {
  return files_;
}

DateFormatters& LinuxHost::dateFormatters() {
  return dateFormatters_;
}

std::shared_ptr<Pasteboard> LinuxHost::generalPasteboard() {
  return pasteboard();
}

const std::shared_ptr<X11Connection>& LinuxHost::x11() {
  if (!x11_) x11_ = X11Connection::open();
  return *x11_;
}

const std::shared_ptr<LinuxPasteboard>& LinuxHost::pasteboard() {
  if (pasteboard_ == nullptr) pasteboard_ = std::make_shared<LinuxPasteboard>();
  return pasteboard_;
}

LinuxAccessibility& LinuxHost::linuxAccessibility() {
  if (!accessibility_) accessibility_.emplace(displayOf(x11())).start();
  return *accessibility_;
}

LinuxRunLoop& LinuxHost::linuxRunLoop() {
  return made(runLoop_);
}

void LinuxHost::finishWork() {
  if (hotKeyService_) hotKeyService_->stop();
  linuxRunLoop().finishPending(kLastWork);
}

}  // namespace lexwend::platform
