// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/application.h"

class QApplication;

namespace lexwend::platform {

class X11Connection;

/// The agent as an application of Qt on an X11 display. SIGTERM, SIGINT, SIGHUP, the end of the session and
/// terminate() all end the event loop the same way: the windows go without being asked, what the host still
/// has to finish is finished, so that the clipboard is put back; then run() returns and the services let go
/// of what they hold.
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
  std::optional<std::string> takeSharedApplication() override;
  /// In a Wayland session that has an X11 display: what works there.
  std::optional<std::string> notice() override;
  void setDelegate(std::function<void()> didFinishLaunching) override;
  /// An agent without windows is an accessory on X11 anyway.
  void setActivationPolicy(ActivationPolicy policy) override;
  void run() override;
  void terminate() override;
  /// Raises the windows of this application, if there are any, and gives one of them the focus.
  void activate(bool ignoringOtherApps) override;
  /// The X server's bell, which desktops turn into their alert sound.
  void beep() override;

 private:
  Needs needs_;
  std::unique_ptr<QApplication> application_;
  std::function<void()> didFinishLaunching_;
};

}  // namespace lexwend::platform
