// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "platform/keys.h"

namespace lexwend::platform {

/// The system's status code; 0 (noErr) is success.
using OSStatus = std::int32_t;
inline constexpr OSStatus kNoErr = 0;

/// The identity of a registration: a four-character code and a number.
struct HotKeyID {
  std::uint32_t signature = 0;
  std::uint32_t id = 0;
  bool operator==(const HotKeyID&) const = default;
};

/// A registration of the system. Opaque.
class HotKey {
 public:
  virtual ~HotKey() = default;
};
using HotKeyRef = std::shared_ptr<HotKey>;

struct HotKeyRegistration {
  OSStatus status = kNoErr;
  HotKeyRef ref;  ///< may be null even when the status is 0
};

/// A press that the system reports. Valid during the handler's call only.
class HotKeyEvent {
 public:
  virtual ~HotKeyEvent() = default;
  /// Reads the identity of the pressed hot key; on failure `out` is left as it was.
  virtual OSStatus hotKeyID(HotKeyID& out) const = 0;
};

/// System-wide hot keys. Main thread only; the handler is called there, from the run loop, once per press (a
/// held key does not repeat). A registered key does not reach the application in front.
class HotKeyService {
 public:
  virtual ~HotKeyService() = default;
  /// Installs the handler of all hot keys of this process. Called once.
  virtual OSStatus installHandler(std::function<OSStatus(const HotKeyEvent&)> handler) = 0;
  /// Key code and mask go to the system as given. A host may refuse a combination that another program holds,
  /// with a non-zero status, or let the key reach both.
  virtual HotKeyRegistration registerHotKey(KeyCode keyCode, Modifiers modifiers, HotKeyID identity) = 0;
  virtual OSStatus unregisterHotKey(const HotKeyRef& ref) = 0;
};

/// The service of the installed host.
HotKeyService& hotKeyService();

}  // namespace lexwend::platform
