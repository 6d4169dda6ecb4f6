// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gio/gio.h>

#include "platform/linux/display/x11_connection.h"
#include "platform/linux/keyboard/keyboard_devices.h"
#include "platform/linux/keymap/layout_shortcut.h"
#include "platform/linux/keymap/xkb_input_sources.h"

namespace lexwend::platform {

/// Keyboard layouts are the groups of the XKB keymap of the user's keyboard. Their names are those of the
/// configuration that produced the keymap. Without a display there is no list. Selecting a layout locks its
/// group and tells a desktop that has a list of its own (desktop_layouts.h). Where the desktop does not let
/// go of its layout, its own shortcut is pressed instead (layout_shortcut.h), and the layout is another one a
/// moment later.
class LinuxInputSources : public XkbInputSources {
 public:
  using SessionBus = std::function<GDBusConnection*()>;
  using Play = std::function<void(KeyCode, EventFlags)>;
  /// `sessionBus` is called when a layout is selected. It may be null and may return null. `play` presses and
  /// releases a key with modifiers; without it no shortcut is pressed.
  explicit LinuxInputSources(std::shared_ptr<X11Connection> x11, SessionBus sessionBus = nullptr,
                             Play play = nullptr);
  ~LinuxInputSources() override;

  InputSourceRef copyCurrentKeyboardLayoutInputSource() override;
  /// Replacing a keymap causes many events, so changes that follow each other within 50 ms are reported once.
  /// Asking for the current layout meanwhile reports them at once, so that a fix right after a change knows
  /// the new layouts.
  Registration observeEnabledLayoutsChanged(std::function<void()> handler) override;

 private:
  class Watch;
  std::optional<Layouts> layouts() override;
  void selectLayout(const std::vector<XkbLayoutName>& enabled, std::size_t place) override;
  KeyLayoutDataRef dataOf(const XkbInputSource& source) override;
  std::string typedInFirst(std::size_t count) override;
  /// The keyboard that the user types on, as XKB requests name it. Its keymap counts, since simulated keys
  /// may replace the core keyboard's. Without XInput 2 it is the core keyboard.
  std::uint16_t usersKeyboard();
  /// Fetched once, and again when the server announces a new keymap, when the name of the configuration
  /// differs, or for another keyboard.
  std::shared_ptr<xkb_keymap> serverKeymap();

  std::shared_ptr<X11Connection> x11_;
  KeyboardDevices::Id usersKeyboard_ = KeyboardDevices::kNone;
  SessionBus sessionBus_;
  std::optional<LayoutShortcut> shortcut_;
  std::shared_ptr<xkb_keymap> keymap_;
  std::int32_t keymapsKeyboard_ = -1;
  std::optional<std::string> keymapsRules_;
  X11Connection::Observation keymapChanges_;
  std::unique_ptr<Watch> watch_;
};

}  // namespace lexwend::platform
