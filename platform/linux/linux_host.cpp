// SPDX-License-Identifier: MIT
#include "platform/linux/linux_host.h"

#include <chrono>
#include <fstream>
#include <string>

#include <unistd.h>

#include "platform/linux/gnome/key_player.h"
#include "platform/linux/gnome/selections.h"
#include "platform/linux/kwin/entry.h"
#include "platform/linux/selection/selections.h"
#include "platform/linux/session/buses.h"
#include "platform/linux/session/identity.h"
#include "platform/linux/sway/front_window.h"
#include "platform/linux/wayland/connection.h"
#include "platform/linux/wayland/data_control.h"
#include "platform/linux/wayland/selections.h"
#include "platform/linux/wayland/virtual_keyboard.h"

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

/// The name of its program, as the kernel cuts it; nothing when it is gone.
std::optional<std::string> nameOfProcess(std::uint32_t process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/comm");
  std::string name;
  return std::getline(file, name) ? std::optional(name) : std::nullopt;
}

/// Whether the compositor, if there is one, lets a program use the clipboard and press keys.
bool compositorOffersEnough() {
  const auto connection = WaylandConnection::open();
  return connection && DataControl::isOffered(*connection) && VirtualKeyboard::isOffered(*connection);
}

}  // namespace

InputSourceService& LinuxHost::inputSourceService() {
  if (sway()) return made(swayInputSources_, sway(), VirtualKeyboard::kLayoutName);
  const auto play = [this](KeyCode key, EventFlags flags) { playKey(key, flags); };
  if (kwin()) return made(kwinInputSources_, kwin());
  if (gnome()) return made(gnomeInputSources_, gnome(), play);
  return made(inputSources_, x11(), sessionBus, play);
}

Accessibility& LinuxHost::accessibility() {
  return linuxAccessibility();
}

SecureInput& LinuxHost::secureInput() {
  return made(secureInput_, LinuxSecureInput::Needs{[this] { return frontWindowClass(); },
                                                    [this] { return linuxAccessibility().focusIsSecure(); },
                                                    [this] { return screenIsLocked(); }});
}

KeyEvents& LinuxHost::keyEvents() {
  // A clipboard that cannot be given back must not be overwritten by a simulated copy. Where nothing is
  // selected some editors copy the line of the caret. Where the paste of the fix before is still to come the
  // same text would be copied and pasted twice.
  // What somebody else has copied since must not be pasted in its place.
  const auto mayCopy = [this] {
    // Without a window that tells of itself it could be a terminal.
    const bool isUnknown = gnome() && !frontWindow();
    return !isUnknown && pasteboard()->canBeGivenBack() && !pasteboard()->pasteIsUnderWay() &&
           !linuxAccessibility().selectionIsKnownEmpty();
  };
  const auto mayPaste = [this] { return pasteboard()->holdsPassingText(); };
  if (isWayland()) {
    std::unique_ptr<KeyPlayer> player;
    std::function<std::optional<FocusKey>(std::int64_t)> focusKey;
    if (sway()) {
      player = VirtualKeyboard::open();
      focusKey = [this](std::int64_t window) { return focusKeyOf(sway(), window); };
    }
    if (kwin()) player = kwin()->keyPlayer();
    if (gnome()) player = std::make_unique<MutterKeyPlayer>(mutter_);
    return made(
        waylandKeyEvents_,
        WaylandKeyEvents::Needs{[this] { return frontWindow(); }, mayCopy, mayPaste, std::move(focusKey)},
        std::move(player));
  }
  return made(keyEvents_, x11(), mayCopy, mayPaste);
}

HotKeyService& LinuxHost::hotKeyService() {
  if (sway()) {
    return made(swayHotKeyService_, sway(),
                [this] { return runningApplications_.holderOfLock(kIdentifier).has_value(); });
  }
  if (kwin()) return made(kwinHotKeyService_, kwin());
  if (gnome()) return gnomeHotKeyService();
  return made(hotKeyService_, x11());
}

/// Or the user will be asked for it.
bool LinuxHost::hotKeyCanCome() {
  return gnomeHotKeyService().hasHotKeys() || gnomeHotKeyService().needsAgreement();
}

GnomeHotKeyService& LinuxHost::gnomeHotKeyService() {
  return made(gnomeHotKeyService_, gnome(), GnomeKeyBinding(LinuxLoginItem::ownProgram()));
}

StatusBar& LinuxHost::statusBar() {
  return made(statusBar_,
              LinuxStatusBar::Needs{[this] { application().terminate(); }, [this] { return x11(); },
                                    [this]() -> RunLoop& { return runLoop(); }});
}

RecorderWindows& LinuxHost::recorderWindows() {
  if (kwin()) return made(recorderWindows_, [this](bool held) { kwin()->blockShortcuts(held); });
  return made(recorderWindows_);
}

KeyMonitor& LinuxHost::keyMonitor() {
  return keyMonitor_;
}

Alerts& LinuxHost::alerts() {
  return alerts_;
}

Workspace& LinuxHost::workspace() {
  return made(workspace_, [this] { return frontWindowClass(); });
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
  return made(application_, LinuxApplication::Needs{[this] { finishWork(); }, [this] { return isWayland(); },
                                                    [this] { return x11(); }, [this] { focusOwnWindow(); },
                                                    [this] { return !kwin() || kwin()->grantsAll(); },
                                                    [this] { return !gnome() || hotKeyCanCome(); }});
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
                  .x11 = [this] { return x11(); },
                  .compositorServes = [this] { return isWayland(); },
                  .grantIsMissing = [this] { return kwin() && !anEntryGrantsKeys(); },
                  .hasHotKeys = [this] { return !gnome() || gnomeHotKeyService().hasHotKeys(); },
                  .accessibilityIsConnected = [this] { return linuxAccessibility().isConnected(); },
                  .runningAgent = [this] { return runningApplications_.holderOfLock(kIdentifier); }});
}

const std::shared_ptr<SwayIpc>& LinuxHost::sway() {
  if (!sway_) {
    sway_ = SwayIpc::open();
    if (*sway_ && !compositorOffersEnough()) sway_->reset();
  }
  return *sway_;
}

const std::shared_ptr<KWin>& LinuxHost::kwin() {
  if (!kwin_) kwin_ = sway() ? nullptr : KWin::open();
  return *kwin_;
}

const std::shared_ptr<GnomeShell>& LinuxHost::gnome() {
  if (!gnome_) {
    const bool isMutter = !sway() && !kwin() && MutterRemoteDesktop::isOffered() && WaylandConnection::open();
    // Whoever holds the lock is the agent.
    const bool isAgent = isMutter && runningApplications_.holdsLock(kIdentifier);
    gnome_ = isMutter ? std::make_shared<GnomeShell>(isAgent) : nullptr;
    if (isMutter) mutter_ = std::make_shared<MutterRemoteDesktop>();
  }
  return *gnome_;
}

const std::shared_ptr<X11Connection>& LinuxHost::x11() {
  if (!x11_) x11_ = isWayland() ? nullptr : X11Connection::open();
  return *x11_;
}

Selections LinuxHost::selections() {
  if (gnome()) return selectionsOfMutter(mutter_);
  return isWayland() ? selectionsOfWayland() : selectionsOfX();
}

std::optional<FrontWindow> LinuxHost::frontWindow() {
  if (sway()) return frontWindowOf(*sway());
  if (kwin()) return kwin()->frontWindow();
  if (gnome()->serves()) return gnome()->frontWindow();
  // The window of that process: the bus tells no more.
  const auto process = linuxAccessibility().activeProcess();
  if (!process) return std::nullopt;
  return FrontWindow{*process, process, nameOfProcess(*process)};
}

bool LinuxHost::screenIsLocked() {
  return (kwin() && kwin()->screenIsLocked()) || (gnome() && gnome()->screenIsLocked());
}

void LinuxHost::playKey(KeyCode key, EventFlags flags) {
  if (gnome()) pasteboard();  // which ends the session that the keys are played in
  for (const bool down : {true, false}) {
    const auto event = keyEvents().createKeyboardEvent(nullptr, key, down);
    if (!event) return;
    event->setFlags(flags);
    keyEvents().post(EventTap::hid, *event);
  }
}

std::optional<std::uint32_t> LinuxHost::frontProcess() {
  if (!isWayland()) return x11() ? x11()->activeWindowProcess() : std::nullopt;
  const auto window = frontWindow();
  return window ? window->process : std::nullopt;
}

std::optional<std::string> LinuxHost::frontWindowClass() {
  if (!isWayland()) return x11() ? x11()->activeWindowClass() : std::nullopt;
  const auto window = frontWindow();
  return window ? window->windowClass : std::nullopt;
}

void LinuxHost::focusOwnWindow() {
  if (sway()) sway()->run("[pid=" + std::to_string(getpid()) + "] focus");
  if (kwin()) kwin()->focusOwnWindow();
}

LinuxAccessibility::Display LinuxHost::displayOfAccessibility() {
  return {
      .mayControl =
          [this] {
            return isWayland() || (x11() && x11()->hasXTest() && x11()->hasXFixes() && x11()->hasXkb());
          },
      .frontProcess = [this] { return frontProcess(); },
      .frontWindowClass = [this] { return frontWindowClass(); },
      .primarySelection = [reader = std::make_shared<PrimaryReader>(selections())] { return reader->read(); },
      .tellsFront = [this] { return (!kwin() || kwin()->grantsAll()) && (!gnome() || gnome()->serves()); },
  };
}

const std::shared_ptr<LinuxPasteboard>& LinuxHost::pasteboard() {
  if (pasteboard_ == nullptr) {
    const auto lastOf = [this](bool isCopy) -> std::optional<PlayedShortcut> {
      if (keyEvents_) return isCopy ? keyEvents_->lastCopy() : keyEvents_->lastPaste();
      if (waylandKeyEvents_) return isCopy ? waylandKeyEvents_->lastCopy() : waylandKeyEvents_->lastPaste();
      return std::nullopt;
    };
    pasteboard_ = std::make_shared<LinuxPasteboard>(
        PasteboardBudget{},
        LinuxPasteboard::Needs{.lastCopy = [lastOf] { return lastOf(true); },
                               .lastPaste = [lastOf] { return lastOf(false); }},
        OwnerTimes{}, selections());
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
  if (swayHotKeyService_) swayHotKeyService_->stop();
  if (kwinHotKeyService_) kwinHotKeyService_->stop();
  if (gnomeHotKeyService_) gnomeHotKeyService_->stop();
  linuxRunLoop().finishPending(kLastWork);
}

}  // namespace lexwend::platform
