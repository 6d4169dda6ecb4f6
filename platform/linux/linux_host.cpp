// SPDX-License-Identifier: MIT
#include "platform/linux/linux_host.h"

#include <chrono>

#include "platform/linux/selection/reader.h"
#include "platform/linux/session/buses.h"

namespace lexwend::platform {
namespace {

/// The longest deferral that the end of the program waits for: the clipboard is put back half a second after
/// a fix. What comes later, as the icon that is put back, is not needed any more.
constexpr std::chrono::milliseconds kLastWork(600);

/// For the services of the main thread.
template <typename Service, typename... Arguments>
Service& made(std::optional<Service>& service, Arguments&&... arguments) {
  if (!service) service.emplace(std::forward<Arguments>(arguments)...);
  return *service;
}

/// Reads the PRIMARY selection over a connection that is made for the first reading and kept.
class PrimaryReader {
 public:
  std::optional<std::string> read() {
    // As long as for any other question about the focused field. A masked entry holds a password, not a book.
    constexpr std::chrono::milliseconds kTime{250};
    constexpr std::size_t kMaxBytes = 4096;
    if (!reader_) reader_ = ClipboardReader::open("PRIMARY");
    return reader_ ? reader_->readText({kTime, kTime, kMaxBytes}) : std::nullopt;
  }

 private:
  std::unique_ptr<ClipboardReader> reader_;
};

LinuxAccessibility::Display displayOf(const std::shared_ptr<X11Connection>& x11) {
  return {
      .mayControl = [x11] { return x11 != nullptr && x11->hasXTest() && x11->hasXFixes() && x11->hasXkb(); },
      .frontProcess = [x11] { return x11 != nullptr ? x11->activeWindowProcess() : std::nullopt; },
      .frontWindowClass = [x11] { return x11 != nullptr ? x11->activeWindowClass() : std::nullopt; },
      .primarySelection = [reader = std::make_shared<PrimaryReader>()] { return reader->read(); },
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
  return made(
      secureInput_,
      LinuxSecureInput::Needs{[this] { return x11() != nullptr ? x11()->activeWindowClass() : std::nullopt; },
                              [this] { return linuxAccessibility().focusIsSecure(); }});
}

KeyEvents& LinuxHost::keyEvents() {
  // A clipboard that cannot be given back must not be overwritten by a simulated copy. Where nothing is
  // selected some editors copy the line of the caret.
  // What somebody else has copied since must not be pasted in its place.
  return made(
      keyEvents_, x11(),
      [this] { return pasteboard()->canBeGivenBack() && !linuxAccessibility().selectionIsKnownEmpty(); },
      [this] { return pasteboard()->holdsPassingText(); });
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

RunningInstance& LinuxHost::runningInstance() {
  return made(runningInstance_, &LinuxStatusBar::menuIsOpen);
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
  if (pasteboard_ == nullptr) {
    pasteboard_ = std::make_shared<LinuxPasteboard>(
        PasteboardBudget{},
        LinuxPasteboard::Needs{
            .lastCopy = [this] { return keyEvents_ ? keyEvents_->lastCopy() : std::nullopt; },
            .lastPaste = [this] { return keyEvents_ ? keyEvents_->lastPaste() : std::nullopt; }});
  }
  return pasteboard_;
}

LinuxAccessibility& LinuxHost::linuxAccessibility() {
  if (!accessibility_) {
    accessibility_.emplace(displayOf(x11()));
    // The way to the accessibility bus begins at the session bus, whenever that comes.
    sessionBus_ = observeSessionBus([this](GDBusConnection* bus) {
      if (bus != nullptr) accessibility_->start();
    });
  }
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
