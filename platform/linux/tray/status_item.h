// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string_view>

#include "platform/run_loop.h"
#include "platform/status_item.h"

namespace lexwend::platform {

class X11Connection;

/// The tray. Where a panel shows StatusNotifier items, the agent has such an item. Otherwise it has an icon
/// in an XEmbed tray. It moves from one to the other when a panel or tray appears or goes. Main thread only.
/// No call waits for a panel or tray, and without one nothing is shown.
///
/// A click opens the agent's own menu, drawn from right to left, except where the panel draws the menu
/// itself. On Wayland a menu of the agent's own is a window without a frame, placed by the compositor. Where
/// the icon is installed, a panel gets its name and colors it; any other gets a picture that is legible on
/// every color. The tooltip is the title of the menu's first item that only informs.
class LinuxStatusBar : public StatusBar {
 public:
  struct Needs {
    std::function<void()> terminate;                      ///< ends the application
    std::function<std::shared_ptr<X11Connection>()> x11;  ///< may return null
    std::function<RunLoop&()> runLoop;
  };
  explicit LinuxStatusBar(Needs needs) : needs_(std::move(needs)) {}

  /// The application object must exist. `length` has no effect: the tray decides the size of its icons.
  StatusItemRef statusItem(double length) override;
  MenuRef makeMenu() override;
  MenuItemRef makeMenuItem() override;
  SymbolImageRef symbolImage(std::string_view name, std::string_view accessibilityDescription) override;

  /// Whether the agent's own menu is open and has the keyboard.
  static bool menuIsOpen();

 private:
  Needs needs_;
};

}  // namespace lexwend::platform
