// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gio/gio.h>

#include "platform/input_sources.h"
#include "platform/linux/display/x11_connection.h"
#include "platform/linux/keyboard/keyboard_devices.h"

struct xkb_context;
struct xkb_keymap;

namespace lexwend::platform {

/// One layout of the X server's configuration, "us", "us(dvorak)", "il".
struct XkbLayoutName {
  std::string layout;
  std::string variant;
  bool operator==(const XkbLayoutName&) const = default;
  /// The layout, and in parentheses the variant if there is one.
  std::string id() const;
};

/// The value of _XKB_RULES_NAMES: rules, model, layouts, variants and options, each ended by a NUL, layouts
/// and variants each a list with commas.
std::vector<XkbLayoutName> parseRulesNames(std::string_view value);

/// The languages of a layout by the registry of keyboard layouts, its ISO 639 codes turned into two-letter
/// codes where there is one ("heb" is "he"). A variant without an entry has its layout's languages; a layout
/// without an entry has none.
std::vector<std::string> languagesOf(const XkbLayoutName& layout);

/// Keyboard layouts are the groups of the XKB keymap of the user's keyboard, named by the configuration that
/// produced it. The identifier of a layout is XkbLayoutName::id(). The keyboard type is always 0: XKB folds
/// it into the keymap. Of the modifiers, translate() knows Shift and Caps Lock. Without a display there is no
/// list. A layout is selected by locking its group; a desktop with a list of its own is told
/// (desktop_layouts.h).
class LinuxInputSources : public InputSourceService {
 public:
  using SessionBus = std::function<GDBusConnection*()>;
  /// `sessionBus` is asked when a layout is selected; it may be null and may give null.
  explicit LinuxInputSources(std::shared_ptr<X11Connection> x11, SessionBus sessionBus = nullptr);
  ~LinuxInputSources() override;

  std::optional<std::vector<InputSourceRef>> createInputSourceList(const InputSourceFilter& filter,
                                                                   bool includeAllInstalled) override;
  InputSourceValue property(const InputSourceRef& source, InputSourceProperty key) override;
  InputSourceRef copyCurrentKeyboardLayoutInputSource() override;
  void select(const InputSourceRef& source) override;
  std::uint32_t keyboardType() override;
  std::optional<std::u16string> translate(const KeyLayoutData& data, const KeyTranslation& translation,
                                          std::uint32_t& deadKeyState) override;
  /// Changes that follow each other within a twentieth of a second are one: replacing a keymap is announced
  /// in many events. The handler is called earlier when the current layout is asked for meanwhile, so that a
  /// fix right after a change knows the new layouts.
  void observeEnabledLayoutsChanged(std::function<void()> handler) override;

 private:
  class Observer;
  std::vector<XkbLayoutName> enabledLayouts();
  /// The keyboard that the user types on, as XKB requests name it: its keymap counts, whatever simulated keys
  /// have made of the core keyboard's. Without XInput 2 that one.
  std::uint16_t usersKeyboard();
  std::shared_ptr<xkb_keymap> serverKeymap();
  std::string signature();

  std::shared_ptr<X11Connection> x11_;
  KeyboardDevices::Id usersKeyboard_ = KeyboardDevices::kNone;
  SessionBus sessionBus_;
  std::shared_ptr<xkb_context> context_;
  std::unique_ptr<Observer> observer_;
};

}  // namespace lexwend::platform
