// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "platform/linux/session/buses.h"
#include "platform/linux/session/glib_ref.h"
#include "platform/workspace.h"

namespace lexwend::platform {

/// The session by X11 properties, GIO and the machine's message bus. No call waits for another program. A URL
/// of macOS's own settings stands for the desktop's accessibility settings: opening it switches the
/// accessibility bus on, and under GNOME or KDE shows their settings.
class LinuxWorkspace : public Workspace {
 public:
  /// Gives the class of the active window; asked when the front application is.
  explicit LinuxWorkspace(std::function<std::optional<std::string>()> activeWindowClass);
  /// No handler is called any more.
  ~LinuxWorkspace() override;
  LinuxWorkspace(const LinuxWorkspace&) = delete;
  LinuxWorkspace& operator=(const LinuxWorkspace&) = delete;

  std::optional<FrontApplication> frontmostApplication() override;
  UrlRef urlFromString(std::string_view text) override;
  void open(const UrlRef& url) override;
  /// logind's PrepareForSleep(false). While there is no system bus nothing is heard.
  Registration observeDidWake(std::function<void()> handler) override;

 private:
  void subscribe(GDBusConnection* bus);
  static void preparedForSleep(GDBusConnection* bus, const char* sender, const char* path,
                               const char* interface, const char* signal, GVariant* arguments,
                               void* workspace);

  std::function<std::optional<std::string>()> activeWindowClass_;
  Handlers<std::function<void()>> wakeHandlers_;
  GObjectRef<GDBusConnection> subscribedTo_;
  unsigned subscription_ = 0;
  BusObservation systemBus_;
};

}  // namespace lexwend::platform
