// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/application.h"

class QApplication;

namespace lexwend::platform {

struct SessionLimit;
struct SessionNotice;
class X11Connection;

/// The agent as a Qt application on an X11 display or a Wayland compositor. SIGTERM, SIGINT, SIGHUP
/// (end_request.h), the end of the session and terminate() all end the event loop in the same way: the
/// windows are hidden without a question, the host finishes the fix that runs and puts the clipboard back,
/// run() returns, and the services release what they hold.
class LinuxApplication : public Application {
 public:
  struct Needs {
    std::function<void()> finishWork;  ///< runs when the event loop has ended and no window is left
    std::function<bool()> isWayland;   ///< whether the services are those of a Wayland compositor
    std::function<std::shared_ptr<X11Connection>()> x11;
    std::function<void()> focusOwnWindow;  ///< asks the compositor; called only where there is one
    std::function<bool()> mayPressKeys = [] { return true; };  ///< whether the compositor lets it
    /// Why no press of the hot key can come; null when one can.
    std::function<const SessionLimit*()> hotKeyLimit = [] { return nullptr; };
    /// Whether an entry in the user's applications would let it press keys, and could be written.
    std::function<bool()> gainsByEntry = [] { return false; };
    std::function<bool()> writeEntry = [] { return false; };
  };
  explicit LinuxApplication(Needs needs);
  ~LinuxApplication() override;
  LinuxApplication(const LinuxApplication&) = delete;
  LinuxApplication& operator=(const LinuxApplication&) = delete;

  std::optional<std::string> bundleIdentifier() override;
  std::string displayName() override;
  std::optional<std::string> shortVersionString() override;

  /// Fails without a display. A notification shows the same message, and the one of notice().
  ///
  /// After this call the system makes no core dump of this process, and no other process of the user can read
  /// its memory. When the session bus does not answer yet, the toolkit does without it for the whole run. The
  /// windows of this application are then silent to screen readers. Nothing else depends on it.
  std::optional<std::string> takeSharedApplication() override;
  /// When the services are those of X11 in a Wayland session, or a compositor does not let this program press
  /// keys: a sentence about what works there. Else one when no font has Hebrew letters, without which the
  /// menu and the windows are empty.
  std::optional<std::string> notice() override;
  std::string limitation() override;
  bool gainsByInstallation() override { return needs_.gainsByEntry(); }
  /// The program that starts anew has the number of this process.
  bool install() override;
  void setDelegate(std::function<void()> didFinishLaunching) override;
  /// Has no effect: an agent without windows is an accessory here.
  void setActivationPolicy(ActivationPolicy policy) override;
  void run() override;
  void terminate() override;
  /// Raises the windows of this application, if there are any, and gives one of them the focus.
  void activate(bool ignoringOtherApps) override;
  /// The display's bell, which desktops turn into their alert sound; Wayland has none.
  void beep() override;
  void notifyUser(std::string_view sentence) override;

 private:
  class HiddenBus;
  /// What does not work in this session; null when all does.
  const SessionNotice* limit();

  Needs needs_;
  std::unique_ptr<HiddenBus> busIsHidden_;  ///< from the making of the toolkit to the start of its loop
  std::unique_ptr<QApplication> application_;
  std::function<void()> didFinishLaunching_;
  bool startsAnew_ = false;  ///< when the event loop has ended
};

}  // namespace lexwend::platform
