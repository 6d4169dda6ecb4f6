// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <memory>
#include <utility>

#include "platform/linux/gnome/remote_desktop.h"
#include "platform/linux/wayland/key_player.h"

namespace lexwend::platform {

/// Keys by mutter's remote control, with a pause between them: of a chord whose events came at once mutter
/// was seen to lose the modifier. Each key waits for that pause. Modifiers that the user holds would count
/// for the keys that are played; the extension tells a press when they are up.
class MutterKeyPlayer : public KeyPlayer {
 public:
  explicit MutterKeyPlayer(std::shared_ptr<MutterRemoteDesktop> remote) : remote_(std::move(remote)) {}
  bool play(std::uint16_t evdevKey, bool down, std::uint32_t modifiersAfter) override;
  bool settle() override;

 private:
  std::shared_ptr<MutterRemoteDesktop> remote_;
  std::chrono::steady_clock::time_point lastKey_;
};

}  // namespace lexwend::platform
