// SPDX-License-Identifier: MIT
#pragma once

#include "platform/login_item.h"

namespace lexwend::platform::mac {

/// The main application as a service of SMAppService. Main thread only.
class MacLoginItem : public LoginItem {
 public:
  LoginItemStatus status() override;
  bool registerItem() override;
  bool unregisterItem() override;
};

}  // namespace lexwend::platform::mac
