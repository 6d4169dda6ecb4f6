// SPDX-License-Identifier: MIT
#include "platform/linux/gnome/key_player.h"

#include <thread>

namespace lexwend::platform {
namespace {

// With none 1 chord of 20 lost its modifier, with this one none of 20 did.
constexpr std::chrono::milliseconds kPause{15};

}  // namespace

bool MutterKeyPlayer::play(std::uint16_t evdevKey, bool down, std::uint32_t /*modifiersAfter*/) {
  if (!remote_->open()) return false;
  std::this_thread::sleep_until(lastKey_ + kPause);
  const bool isPlayed = remote_->playKey(evdevKey, down);
  lastKey_ = std::chrono::steady_clock::now();
  return isPlayed;
}

bool MutterKeyPlayer::settle() {
  return remote_->isOpen();
}

}  // namespace lexwend::platform
