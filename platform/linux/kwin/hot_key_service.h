// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <vector>

#include "platform/linux/keymap/hot_key_keeper.h"
#include "platform/linux/kwin/kwin.h"

namespace lexwend::platform {

/// Global shortcuts of KWin (org.kde.KGlobalAccel). KWin knows them by what their keys type, so a key that
/// types something else in each layout is taken once for each. Another program's shortcut is left to it, and
/// so is a locked screen, which has none. The user sees the shortcut in the settings of the desktop, for as
/// long as it is registered. Command is Control here, Option is Alt, and Control is Super. Main thread only.
/// Registering waits for KWin.
class KWinHotKeyService : public HotKeyKeeper {
 public:
  explicit KWinHotKeyService(std::shared_ptr<KWin> kwin);
  ~KWinHotKeyService() override;

 private:
  OSStatus take(const HotKey& hotKey) override;
  void giveBack(const HotKey& hotKey) override;
  /// Asks KWin a question, whose answer comes after the presses before it.
  void markEndOfPause() override;
  void listenOn(GDBusConnection* bus);
  static void heard(GDBusConnection* bus, const char* sender, const char* path, const char* interface,
                    const char* signal, GVariant* arguments, void* self);

  std::shared_ptr<KWin> kwin_;
  std::shared_ptr<int> pausesEnding_ = std::make_shared<int>(0);  // questions without an answer yet
  Registration keymapObservation_;
  GObjectRef<GDBusConnection> bus_;
  unsigned subscription_ = 0;
  BusObservation busObservation_;
};

}  // namespace lexwend::platform
