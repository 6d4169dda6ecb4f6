// SPDX-License-Identifier: MIT
#pragma once

#include "platform/hot_key_service.h"

namespace lexwend::platform::mac {

/// Hot keys of Carbon, and its event handler, which the system never removes. One object at a time: it is
/// what the handler finds, and its destructor leaves the handler nothing to find. Main thread only.
class MacHotKeyService : public HotKeyService {
 public:
  ~MacHotKeyService() override;
  OSStatus installHandler(std::function<OSStatus(const HotKeyEvent&)> handler) override;
  HotKeyRegistration registerHotKey(KeyCode keyCode, Modifiers modifiers, HotKeyID identity) override;
  Registration ignorePresses() override;
};

}  // namespace lexwend::platform::mac
