// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/linux/keymap/hot_key_keeper.h"
#include "platform/linux/sway/ipc.h"

namespace lexwend::platform {

/// Key bindings of sway that do nothing (`bindcode ... nop`), whose presses sway reports. They name the place
/// of the key, so they are the same in every layout. They take the place of a binding of the user's own for
/// the same combination until sway reads its configuration again; no program can ask sway which ones there
/// are. A locked screen has no bindings. Command is Control here, Option is Alt, and Control is Super. Main
/// thread only. Registering waits for sway.
///
/// sway lets a second binding of the same key take the place of the first. So while another process is the
/// agent no key is bound here, and registering fails as for a key that is held.
///
/// sway repeats the binding of a held key. A second binding, for the release, tells that it was let go.
class SwayHotKeyService : public HotKeyKeeper {
 public:
  SwayHotKeyService(std::shared_ptr<SwayIpc> sway, std::function<bool()> anotherIsTheAgent);
  ~SwayHotKeyService() override;

 private:
  OSStatus take(const HotKey& hotKey) override;
  void giveBack(const HotKey& hotKey) override;
  /// Asks sway for a tick, which it sends after the presses before it.
  void markEndOfPause() override;
  void handleEvent(const SwayEvent& event);
  void handleBinding(const std::string& command);

  std::shared_ptr<SwayIpc> sway_;
  std::function<bool()> anotherIsTheAgent_;
  int pausesEnding_ = 0;  // ticks that have been asked for and have not come
  std::string tick_;      // of this process
  Registration observation_;
};

}  // namespace lexwend::platform
