// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/workspace.h"

namespace lexwend::platform {

/// The session by X11 properties, GIO and the machine's message bus. An address of macOS's own settings
/// stands for the desktop's accessibility settings: opening it switches the accessibility bus on and shows
/// the settings of GNOME or KDE where one of them runs.
class LinuxWorkspace : public Workspace {
 public:
  /// Gives the class of the active window; asked when the front application is.
  explicit LinuxWorkspace(std::function<std::optional<std::string>()> activeWindowClass);
  /// Observers hear of nothing any more.
  ~LinuxWorkspace() override;
  LinuxWorkspace(const LinuxWorkspace&) = delete;
  LinuxWorkspace& operator=(const LinuxWorkspace&) = delete;

  std::optional<FrontApplication> frontmostApplication() override;
  UrlRef urlFromString(std::string_view text) override;
  void open(const UrlRef& url) override;
  /// logind's PrepareForSleep(false); without a system bus the handler is never called.
  void observeDidWake(std::function<void()> handler) override;

 private:
  std::function<std::optional<std::string>()> activeWindowClass_;
  std::vector<unsigned> observations_;
};

}  // namespace lexwend::platform
