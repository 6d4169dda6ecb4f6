// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/linux/kwin/kwin.h"
#include "tests/linux/testing/private_bus.h"
#include "tests/linux/testing/private_sway.h"

namespace lexwend::platform {

/// The services of KWin on a private session bus, with answers that the test writes. The compositor behind
/// them is sway, which offers data control, sends the keymap of its user (us,il) and grants neither keys nor
/// windows.
class FakeKWin {
 public:
  FakeKWin();
  FakeKWin(const FakeKWin&) = delete;
  FakeKWin& operator=(const FakeKWin&) = delete;

  void setLayouts(const std::string& layouts);
  BusPeer& peer() { return peer_; }
  /// The connection to it; null where the program finds no KWin.
  const std::shared_ptr<KWin>& kwin() const { return kwin_; }

  /// From now on another program has every shortcut.
  void takeShortcuts();
  void lockScreen();
  /// Says that the last shortcut that was set is pressed or released.
  void shortcut(const char* signal);
  /// The calls of a method so far, with their arguments as text.
  std::vector<std::string> calls(const std::string& method);

 private:
  struct Session {
    Session();
  };
  GVariant* answer(const std::string& method, GVariant* arguments);

  PrivateSway sway_;
  Session session_;
  BusPeer peer_;
  std::mutex mutex_;
  bool shortcutsAreTaken_ = false;
  bool isLocked_ = false;
  std::uint32_t layout_ = 0;
  std::string component_;
  std::string action_;
  std::vector<std::string> calls_;
  std::shared_ptr<KWin> kwin_;
};

}  // namespace lexwend::platform
