// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "platform/linux/wayland/connection.h"
#include "platform/linux/wayland/key_player.h"

struct zwp_virtual_keyboard_manager_v1;
struct zwp_virtual_keyboard_v1;

namespace lexwend::platform {

/// A keyboard of this program's own, with keys and modifiers and a keymap (US) of its own: what the user
/// holds and which layout is active make no difference to it, and it changes neither. The compositor lists it
/// from the first key on. A compositor that does not take its keys in time takes none of them later: the
/// connection is closed, and another one made for the next key.
class VirtualKeyboard : public KeyPlayer {
 public:
  /// The name of its one layout, by which it can be told from the user's keyboards.
  static constexpr const char* kLayoutName = "Lexwend";

  /// Connects with the first key.
  VirtualKeyboard() = default;
  ~VirtualKeyboard() override;
  VirtualKeyboard(const VirtualKeyboard&) = delete;
  VirtualKeyboard& operator=(const VirtualKeyboard&) = delete;

  static bool isOffered(const WaylandConnection& connection);

  bool play(std::uint16_t evdevKey, bool down, std::uint32_t modifiersAfter) override;
  bool settle() override;

 private:
  bool connect();
  bool create();
  void disconnect();

  std::unique_ptr<WaylandConnection> connection_;  // null before the first key and after it was closed
  zwp_virtual_keyboard_manager_v1* manager_ = nullptr;
  zwp_virtual_keyboard_v1* keyboard_ = nullptr;  // null until the first key
  std::uint32_t modifiers_ = 0;
};

}  // namespace lexwend::platform
