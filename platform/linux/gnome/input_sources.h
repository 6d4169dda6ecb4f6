// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "platform/linux/gnome/shell.h"
#include "platform/linux/keymap/layout_shortcut.h"
#include "platform/linux/keymap/xkb_input_sources.h"

namespace lexwend::platform {

/// The layouts of GNOME Shell, by the extension. Input methods among its input sources are left out. Without
/// the extension they are those of GNOME's settings: the first is the one that the user's own shortcut has
/// selected last, which may not be the one in use, and another is selected by that shortcut
/// (layout_shortcut.h). Main thread only. A call waits for GNOME Shell.
class GnomeInputSources : public XkbInputSources {
 public:
  using Play = std::function<void(KeyCode, EventFlags)>;
  /// `play` presses and releases a key with modifiers.
  GnomeInputSources(std::shared_ptr<GnomeShell> shell, Play play);

 private:
  std::optional<Layouts> layouts() override;
  void selectLayout(const std::vector<XkbLayoutName>& enabled, std::size_t place) override;
  std::optional<KeyCode> keyGiving(std::uint32_t keysym);
  /// Of all layouts; null when the machine has no keymap of them. To compile it takes milliseconds, so it is
  /// kept until the layouts change.
  xkb_keymap* keymapOf(const std::vector<XkbLayoutName>& layouts);

  std::shared_ptr<GnomeShell> shell_;
  std::vector<std::uint32_t> places_;  // of the layouts among GNOME's input sources; empty without extension
  std::shared_ptr<xkb_keymap> keymap_;
  std::vector<XkbLayoutName> layoutsOfKeymap_;
  LayoutShortcut shortcut_;
  Registration observation_;
};

}  // namespace lexwend::platform
