// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/keymap/xkb_input_sources.h"
#include "platform/linux/sway/ipc.h"

namespace lexwend::platform {

/// The layouts of the user's keyboard: the one whose layout has changed last, or else the first of those with
/// the most layouts. The keyboard of this program's own is passed over. sway tells layouts by their
/// descriptions; one that is not in the registry has the description for its identifier. What a layout types
/// is taken from the machine's keymaps, without the options of sway's configuration. Selecting a layout
/// selects it on every keyboard. Main thread only. A call waits for sway.
class SwayInputSources : public XkbInputSources {
 public:
  /// `ownLayout` is the name of the one layout of this program's own keyboard.
  SwayInputSources(std::shared_ptr<SwayIpc> sway, std::string ownLayout);

 private:
  struct Keyboard {
    std::string identifier;
    std::vector<XkbLayoutName> layouts;
    std::size_t active = 0;
  };
  /// Nothing when sway is gone or there is no keyboard.
  std::optional<Keyboard> usersKeyboard();
  std::optional<Layouts> layouts() override;
  void selectLayout(const std::vector<XkbLayoutName>& enabled, std::size_t place) override;
  void handleInput(JsonObject* details);

  std::shared_ptr<SwayIpc> sway_;
  std::string ownLayout_;
  std::string lastChanged_;  // the identifier of a keyboard
  Registration observation_;
};

}  // namespace lexwend::platform
