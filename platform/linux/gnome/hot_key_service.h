// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <map>
#include <memory>

#include "platform/linux/gnome/shell.h"
#include "platform/linux/keymap/hot_key_keeper.h"

namespace lexwend::platform {

/// Keys that the extension takes from GNOME Shell by their place, so they are the same in every layout. A
/// combination of GNOME's own is refused. A locked screen has none of them. Without the extension no key can
/// be taken; it is taken when the extension comes. Command is Control here, Option is Alt, and Control is
/// Super. Main thread only. Registering waits for GNOME Shell.
class GnomeHotKeyService : public HotKeyKeeper {
 public:
  explicit GnomeHotKeyService(std::shared_ptr<GnomeShell> shell);
  ~GnomeHotKeyService() override;

 private:
  OSStatus take(const HotKey& hotKey) override;
  void giveBack(const HotKey& hotKey) override;
  void markEndOfPause() override;
  void handleEvent(const ShellEvent& event);

  std::shared_ptr<GnomeShell> shell_;
  std::map<std::uint64_t, std::uint32_t> bound_;  // the extension's numbers by those of the hot keys
  std::shared_ptr<int> pausesEnding_ = std::make_shared<int>(0);  // whose last presses have not been told yet
  Registration observation_;
};

}  // namespace lexwend::platform
