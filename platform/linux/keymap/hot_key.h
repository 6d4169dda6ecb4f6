// SPDX-License-Identifier: MIT
#pragma once

#include "platform/hot_key_service.h"

namespace lexwend::platform {

/// Statuses of a refused registration: eventHotKeyExistsErr and eventHotKeyInvalidErr of Carbon.
inline constexpr OSStatus kHotKeyExistsErr = -9878;
inline constexpr OSStatus kHotKeyInvalidErr = -9879;

/// A press of a key whose identity is known.
class KnownHotKeyEvent : public HotKeyEvent {
 public:
  explicit KnownHotKeyEvent(HotKeyID identity) : identity_(identity) {}
  OSStatus hotKeyID(HotKeyID& out) const override {
    out = identity_;
    return kNoErr;
  }

 private:
  HotKeyID identity_;
};

}  // namespace lexwend::platform
