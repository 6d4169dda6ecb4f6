// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/keys.h"
#include "platform/linux/keymap/xkb_layouts.h"

namespace lexwend::platform {

/// A key with modifiers.
struct KeyCombination {
  EventFlags modifiers{};
  std::uint32_t keysym = 0;
};

/// The combination that a setting of GTK's notation names, as "<Shift><Super>space"; nothing for one that is
/// switched off or that has a modifier other than Shift, Control, Alt and Super.
std::optional<KeyCombination> parseAccelerator(std::string_view text);

/// The layout that GNOME calls "us+dvorak".
XkbLayoutName layoutOfSource(std::string_view identifier);

/// The layouts in the settings of GNOME (org.gnome.desktop.input-sources), the one used last first. An input
/// method has its place, and no name that a layout has. Empty without those settings.
std::vector<XkbLayoutName> desktopLayoutsByUse();

/// Selects a layout where the desktop lets no program select one, as GNOME: by pressing the user's own
/// shortcut for it, which the desktop's settings name (switch-input-source and switch-input-source-backward
/// of org.gnome.desktop.wm.keybindings). The first of them selects the layout that was in use before the
/// present one, the second that which was used longest ago, so that it comes to each layout in turn. It does
/// not matter who plays the keys, X or a compositor. Main thread only.
class LayoutShortcut {
 public:
  struct Needs {
    /// The layout in use. Without it, it is the first of desktopLayoutsByUse(), which GNOME keeps up to date
    /// when its shortcut is pressed.
    std::function<std::optional<XkbLayoutName>()> current;
    /// The key that gives the keysym in one of the layouts; nothing where none does.
    std::function<std::optional<KeyCode>(std::uint32_t keysym)> keyGiving;
    /// Presses and releases the key with these modifiers.
    std::function<void(KeyCode, EventFlags)> play;
    /// The longest wait for the desktop to answer a press.
    std::chrono::milliseconds patience{2000};
  };
  explicit LayoutShortcut(Needs needs) : needs_(std::move(needs)) {}
  ~LayoutShortcut() { stop(); }
  LayoutShortcut(const LayoutShortcut&) = delete;
  LayoutShortcut& operator=(const LayoutShortcut&) = delete;

  /// Presses the shortcut, and from GLib's default main context once more for as long as another layout is in
  /// use: at most as often as the desktop has layouts, and each time when the desktop has answered the press
  /// before, or after Needs::patience. Does not wait. A selection that is under way ends. False when nothing
  /// can be pressed: the settings name no such layout, or no shortcut that a key gives.
  bool select(const XkbLayoutName& layout);

 private:
  bool press();
  bool look();
  std::optional<XkbLayoutName> inUse() const;
  void stop();

  Needs needs_;
  XkbLayoutName wanted_;
  std::optional<XkbLayoutName> before_;  // the layout in use when the shortcut was pressed last
  std::size_t presses_ = 0;
  std::chrono::steady_clock::time_point pressedAt_;
  unsigned looking_ = 0;  // the source in the main context
};

}  // namespace lexwend::platform
