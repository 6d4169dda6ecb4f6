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

class X11Connection;

/// The agent as an application of Qt on an X11 display. SIGTERM, SIGINT, SIGHUP (end_request.h), the end of
/// the session and terminate() all end the event loop in the same way. The windows are hidden without a
/// question. The host finishes what it has begun, so that the clipboard is put back. Then run() returns, and
/// the services release what they hold.
class LinuxApplication : public Application {
 public:
  struct Needs {
    std::function<void()> finishWork;  ///< runs when the event loop has ended and no window is left
    std::function<std::shared_ptr<X11Connection>()> x11;
  };
  explicit LinuxApplication(Needs needs);
  ~LinuxApplication() override;
  LinuxApplication(const LinuxApplication&) = delete;
  LinuxApplication& operator=(const LinuxApplication&) = delete;

  std::optional<std::string> bundleIdentifier() override;
  std::string displayName() override;
  std::optional<std::string> shortVersionString() override;

  /// Fails without an X11 display. What it says, or notice() will, it shows as a notification as well.
  ///
  /// From then on the system makes no core dump of this process, and no other process of the user can read
  /// its memory. Where the session bus does not answer yet, the toolkit does without it for the whole run:
  /// this application's own windows are then silent to screen readers, and nothing else depends on it.
  std::optional<std::string> takeSharedApplication() override;
  /// In a Wayland session with an X11 display, says what works there. Else says when no font has Hebrew
  /// letters, without which the menu and the windows are empty.
  std::optional<std::string> notice() override;
  void setDelegate(std::function<void()> didFinishLaunching) override;
  /// Has no effect: an agent without windows is an accessory on X11.
  void setActivationPolicy(ActivationPolicy policy) override;
  void run() override;
  void terminate() override;
  /// Raises the windows of this application, if there are any, and gives one of them the focus.
  void activate(bool ignoringOtherApps) override;
  /// The X server's bell, which desktops turn into their alert sound.
  void beep() override;
  void notifyUser(std::string_view sentence) override;

 private:
  class HiddenBus;

  Needs needs_;
  std::unique_ptr<HiddenBus> busIsHidden_;  ///< from the making of the toolkit to the start of its loop
  std::unique_ptr<QApplication> application_;
  std::function<void()> didFinishLaunching_;
};

}  // namespace lexwend::platform
