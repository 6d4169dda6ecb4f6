// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string_view>

#include "platform/run_loop.h"
#include "platform/status_item.h"

namespace lexwend::platform {

class X11Connection;

/// The tray: a StatusNotifier item for panels that show such items, else an icon in an XEmbed tray; whichever
/// is there, appears later or comes back. In both, a click opens the agent's own menu, drawn right to left,
/// but where a panel insists on drawing the menu itself. The tooltip is the menu's first item that only
/// informs.
class LinuxStatusBar : public StatusBar {
 public:
  struct Needs {
    std::function<void()> terminate;                      ///< ends the application
    std::function<std::shared_ptr<X11Connection>()> x11;  ///< may give null
    std::function<RunLoop&()> runLoop;
  };
  explicit LinuxStatusBar(Needs needs) : needs_(std::move(needs)) {}

  /// The application object must exist. Every length is that of the tray's own icons.
  StatusItemRef statusItem(double length) override;
  MenuRef makeMenu() override;
  MenuItemRef makeMenuItem() override;
  SymbolImageRef symbolImage(std::string_view name, std::string_view accessibilityDescription) override;

 private:
  Needs needs_;
};

}  // namespace lexwend::platform
