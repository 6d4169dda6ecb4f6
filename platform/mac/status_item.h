// SPDX-License-Identifier: MIT
#pragma once

#include "platform/status_item.h"

namespace lexwend::platform::mac {

/// Makes items of the system's NSStatusBar, which need the shared application. Main thread only.
class MacStatusBar : public StatusBar {
 public:
  StatusItemRef statusItem(double length) override;
  MenuRef makeMenu() override;
  MenuItemRef makeMenuItem() override;
  SymbolImageRef symbolImage(std::string_view name, std::string_view accessibilityDescription) override;
};

}  // namespace lexwend::platform::mac
