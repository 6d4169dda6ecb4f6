// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace lexwend::platform {

/// The values of NSApplicationActivationPolicy: a usual application, or one without an icon in the Dock.
enum class ActivationPolicy { regular = 0, accessory = 1 };

/// This process as an application of the system. Texts are UTF-8. Main thread only. Only run() blocks, and
/// takeSharedApplication() while it connects to the display.
class Application {
 public:
  virtual ~Application() = default;
  /// The identifier of the main bundle; nothing when the executable runs outside of one.
  virtual std::optional<std::string> bundleIdentifier() = 0;
  virtual std::string displayName() = 0;
  /// "CFBundleShortVersionString" of the main bundle; nothing when it is missing or not a string.
  virtual std::optional<std::string> shortVersionString() = 0;

  /// Takes the shared application object. Called once. Returns nothing on success, else one sentence for the
  /// user that says why no agent can run here.
  virtual std::optional<std::string> takeSharedApplication() = 0;
  /// One sentence for the user about what does not work in this session; nothing when all of it works. Valid
  /// after takeSharedApplication().
  virtual std::optional<std::string> notice() = 0;
  /// The same for the user, with what to do about it; empty when all of it works.
  virtual std::string limitation() { return {}; }
  /// Whether more works once this program is in the user's list of applications. Reads that list.
  virtual bool gainsByInstallation() { return false; }
  /// Puts this program into that list. Then the event loop ends, and the program starts anew when run() would
  /// return. False when it could not be put there.
  virtual bool install() { return false; }
  /// `didFinishLaunching` runs once, at the start of run().
  virtual void setDelegate(std::function<void()> didFinishLaunching) = 0;
  virtual void setActivationPolicy(ActivationPolicy policy) = 0;
  /// Runs the event loop. Blocks until terminate() is called or the system ends the loop. A system may end
  /// the process instead of returning.
  virtual void run() = 0;
  /// Ends the event loop in the system's standard way. Returns before the loop has ended.
  virtual void terminate() = 0;

  /// Brings this application to the front.
  virtual void activate(bool ignoringOtherApps) = 0;
  /// Shows one sentence (UTF-8) as a notification. Does not wait for the user. Does nothing where the system
  /// has no notifications.
  virtual void notifyUser(std::string_view /*sentence*/) {}
  /// The system's alert sound.
  virtual void beep() = 0;
};

/// The service of the installed host.
Application& application();

}  // namespace lexwend::platform
