// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <map>
#include <memory>

#include "platform/linux/gnome/key_binding.h"
#include "platform/linux/gnome/shell.h"
#include "platform/linux/keymap/hot_key_keeper.h"

namespace lexwend::platform {

/// Keys that the extension takes from GNOME Shell by their place, so they are the same in every layout. A
/// combination of GNOME's own is refused. A locked screen has none of them.
///
/// Without the extension no program can take a key. When the user agrees, a key binding of GNOME's settings
/// runs `lexwend --fix` instead, from then on until the program ends, and no press is reported. Nothing tells
/// whether the combination is another program's. Without that agreement nothing happens until the extension
/// comes.
///
/// Command is Control here, Option is Alt, and Control is Super. Main thread only. Registering waits for
/// GNOME Shell.
class GnomeHotKeyService : public HotKeyKeeper {
 public:
  GnomeHotKeyService(std::shared_ptr<GnomeShell> shell, GnomeKeyBinding binding);
  ~GnomeHotKeyService() override;

  bool needsAgreement() override;
  void agree() override;
  std::string_view whyNoPressComes() override;
  /// Whether a press can come, by any of the ways.
  bool hasHotKeys();

 private:
  OSStatus take(const HotKey& hotKey) override;
  void giveBack(const HotKey& hotKey) override;
  void markEndOfPause() override;
  void handleEvent(const ShellEvent& event);
  void bind(const HotKey& hotKey);

  std::shared_ptr<GnomeShell> shell_;
  GnomeKeyBinding binding_;
  bool isAgreed_ = false;
  std::map<std::uint64_t, std::uint32_t> bound_;  // the extension's numbers by those of the hot keys
  std::shared_ptr<int> pausesEnding_ = std::make_shared<int>(0);  // whose last presses have not been told yet
  Registration observation_;
};

}  // namespace lexwend::platform
