// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <vector>

#include "platform/linux/wayland/connection.h"
#include "platform/linux/wayland/key_player.h"

struct org_kde_kwin_fake_input;

namespace lexwend::platform {

/// Keys of KWin's own keyboard for programs (org_kde_kwin_fake_input). It has the user's layouts and shares
/// the modifiers with the user's keyboards: what the user holds would count for the keys that are played, so
/// it is let go first. Whoever holds it must press it again. KWin has no way to take a key back that it has
/// not handled yet: a press that it takes late is followed by its release.
class FakeInput : public KeyPlayer {
 public:
  static bool isOffered(const WaylandConnection& connection);
  /// Null where KWin does not let this program press keys. The connection must outlive it.
  static std::unique_ptr<KeyPlayer> open(WaylandConnection& connection);
  ~FakeInput() override;
  FakeInput(const FakeInput&) = delete;
  FakeInput& operator=(const FakeInput&) = delete;

  bool play(std::uint16_t evdevKey, bool down, std::uint32_t modifiersAfter) override;
  bool settle() override;

 private:
  FakeInput(WaylandConnection& connection, org_kde_kwin_fake_input* input)
      : connection_(connection), input_(input) {}
  void tell(std::uint16_t evdevKey, bool down);

  WaylandConnection& connection_;
  org_kde_kwin_fake_input* input_;
  std::vector<std::uint16_t> keysDown_;
};

}  // namespace lexwend::platform
