// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "platform/key_names.h"
#include "platform/keys.h"
#include "platform/registration.h"

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

struct [[nodiscard]] HotKeyRegistration {
  OSStatus status = kNoErr;
  Registration hotKey;  ///< empty unless the status is 0, and where the system gives no reference
};

/// A press that the system reports. Valid during the handler's call only.
class HotKeyEvent {
 public:
  virtual ~HotKeyEvent() = default;
  /// Reads the identity of the pressed hot key; on failure `out` is left as it was.
  virtual OSStatus hotKeyID(HotKeyID& out) const = 0;
};

/// System-wide hot keys. Main thread only. No call waits for another application.
///
/// The run loop calls the handler once per press. A held key does not repeat. A registered key does not reach
/// the application in front. A press that the system holds back until the agent's own menu has closed is
/// dropped.
class HotKeyService {
 public:
  virtual ~HotKeyService() = default;
  /// Installs the handler of all hot keys of this process. Called once. The result of the handler goes to
  /// the system.
  virtual OSStatus installHandler(std::function<OSStatus(const HotKeyEvent&)> handler) = 0;
  /// The system gets the key code and the mask as they are. When another program holds the combination, the
  /// host either refuses it with a non-zero status or lets the key reach both.
  /// The end of the registration unregisters the key. A failure of that is not reported.
  virtual HotKeyRegistration registerHotKey(KeyCode keyCode, Modifiers modifiers, HotKeyID identity) = 0;
  /// A press that is made while the result lives is never reported, however late the system delivers it.
  /// Pauses may overlap. Does not block.
  virtual Registration ignorePresses() = 0;
  /// Whether a hot key takes a change to the user's own settings of the desktop, to which the user has not
  /// agreed: until agree() a key can be registered and no press of it comes.
  virtual bool needsAgreement() { return false; }
  /// The user has agreed. The change is undone when no key is registered any more. A press may then come as a
  /// command of another process (running_instance.h).
  virtual void agree() {}
  /// Why no press of a registered key can come in this session, for the user; empty when it can.
  virtual std::string_view whyNoPressComes() { return {}; }
  /// How combinations are shown on this system.
  virtual const KeyNames& keyNames() { return kMacKeyNames; }
};

/// The service of the installed host.
HotKeyService& hotKeyService();

}  // namespace lexwend::platform
