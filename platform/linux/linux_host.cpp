// SPDX-License-Identifier: MIT
#include "platform/linux/linux_host.h"

#include <chrono>
#include <string>

#include "platform/linux/selection/selections.h"
#include "platform/linux/session/buses.h"
#include "platform/linux/session/identity.h"

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
  explicit PrimaryReader(Selections selections) : selections_(std::move(selections)) {}
  std::optional<std::string> read() {
    // As long as for any other question about the focused field. A masked entry holds a password, not a book.
    constexpr std::chrono::milliseconds kTime{250};
    constexpr std::size_t kMaxBytes = 4096;
    if (!reader_) reader_ = selections_.openReader("PRIMARY");
    return reader_ ? reader_->readText({kTime, kTime, kMaxBytes}) : std::nullopt;
  }

 private:
  Selections selections_;
  std::unique_ptr<ClipboardReader> reader_;
};

}  // namespace

InputSourceService& LinuxHost::inputSourceService() {
  if (!inputSources_) inputSources_ = server().makeInputSources();
  return *inputSources_;
}

Accessibility& LinuxHost::accessibility() {
  return linuxAccessibility();
}

SecureInput& LinuxHost::secureInput() {
  return made(secureInput_, LinuxSecureInput::Needs{[this] { return server().frontWindowClass(); },
                                                    [this] { return linuxAccessibility().focusIsSecure(); },
                                                    [this] { return server().screenIsLocked(); }});
}

KeyEvents& LinuxHost::keyEvents() {
  if (keyEvents_) return *keyEvents_;
  // A clipboard that cannot be given back must not be overwritten by a simulated copy. Where nothing is
  // selected some editors copy the line of the caret. Where the paste of the fix before is still to come the
  // same text would be copied and pasted twice.
  // What somebody else has copied since must not be pasted in its place.
  const auto mayCopy = [this] {
    return pasteboard()->canBeGivenBack() && !pasteboard()->pasteIsUnderWay() &&
           !linuxAccessibility().selectionIsKnownEmpty();
  };
  const auto mayPaste = [this] { return pasteboard()->holdsPassingText(); };
  keyEvents_ = server().makeKeyEvents(mayCopy, mayPaste);
  return *keyEvents_;
}

HotKeyService& LinuxHost::hotKeyService() {
  if (!hotKeyService_) hotKeyService_ = server().makeHotKeyService();
  return *hotKeyService_;
}

StatusBar& LinuxHost::statusBar() {
  return made(statusBar_,
              LinuxStatusBar::Needs{[this] { application().terminate(); }, [this] { return server().x11(); },
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
  return made(workspace_, [this] { return server().frontWindowClass(); });
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
  // Or the user will be asked for what a press takes.
  const auto hotKeyLimit = [this] {
    return hotKeyService().needsAgreement() ? nullptr : this->hotKeyLimit();
  };
  return made(application_, LinuxApplication::Needs{
                                [this] { finishWork(); }, [this] { return server().isCompositor(); },
                                [this] { return server().x11(); }, [this] { server().focusOwnWindow(); },
                                [this] { return server().grantsAll(); }, hotKeyLimit,
                                [this] {
                                  return !server().grantsAll() && server().grantIsMissing() &&
                                         server().canGrant(LinuxLoginItem::ownProgram());
                                },
                                [this] { return server().grant(LinuxLoginItem::ownProgram()); }});
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

Diagnosis& LinuxHost::diagnosis() {
  return made(diagnosis_,
              LinuxDiagnosis::Needs{
                  .x11 = [this] { return server().x11(); },
                  .compositorServes = [this] { return server().isCompositor(); },
                  .grantIsMissing = [this] { return server().grantIsMissing(); },
                  .hotKeyLimit = [this] { return hotKeyLimit(); },
                  .accessibilityIsConnected = [this] { return linuxAccessibility().isConnected(); },
                  .runningAgent = [this] { return runningApplications_.holderOfLock(kIdentifier); }});
}

const SessionLimit* LinuxHost::hotKeyLimit() {
  return hotKeyService().whyNoPressComes().empty() ? nullptr : &server().hotKeyLimit();
}

DisplayServer& LinuxHost::server() {
  if (!server_) {
    server_ = DisplayServer::open(
        {.play = [this](KeyCode key, EventFlags flags) { playKey(key, flags); },
         .activeProcess = [this] { return linuxAccessibility().activeProcess(); },
         // Whoever holds the lock is the agent.
         .thisIsTheAgent = [this] { return runningApplications_.holdsLock(kIdentifier); },
         .anotherIsTheAgent = [this] { return runningApplications_.holderOfLock(kIdentifier).has_value(); }});
  }
  return *server_;
}

void LinuxHost::playKey(KeyCode key, EventFlags flags) {
  pasteboard();  // which ends mutter's session of remote control that the keys are played in
  for (const bool down : {true, false}) {
    const auto event = keyEvents().createKeyboardEvent(nullptr, key, down);
    if (!event) return;
    event->setFlags(flags);
    keyEvents().post(EventTap::hid, *event);
  }
}

LinuxAccessibility::Display LinuxHost::displayOfAccessibility() {
  return {
      .mayControl = [this] { return server().mayControl(); },
      .frontProcess = [this] { return server().frontProcess(); },
      .frontWindowClass = [this] { return server().frontWindowClass(); },
      .primarySelection =
          [reader = std::make_shared<PrimaryReader>(server().selections())] { return reader->read(); },
      .tellsFront = [this] { return server().tellsFront(); },
  };
}

const std::shared_ptr<LinuxPasteboard>& LinuxHost::pasteboard() {
  if (pasteboard_ == nullptr) {
    pasteboard_ = std::make_shared<LinuxPasteboard>(
        PasteboardBudget{},
        LinuxPasteboard::Needs{
            .lastCopy = [this] { return keyEvents_ ? keyEvents_->lastCopy() : std::nullopt; },
            .lastPaste = [this] { return keyEvents_ ? keyEvents_->lastPaste() : std::nullopt; }},
        OwnerTimes{}, server().selections());
  }
  return pasteboard_;
}

LinuxAccessibility& LinuxHost::linuxAccessibility() {
  if (!accessibility_) {
    accessibility_.emplace(displayOfAccessibility());
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
