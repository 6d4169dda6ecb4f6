// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

#include "platform/keys.h"
#include "platform/user_defaults.h"

/// The user's persistent choices: their keys, types and defaults. Every call reads the store again. A value
/// that is absent or of another type reads as its default. Defaults are never written to the store. Any
/// thread. A call blocks for as long as the disk takes.
namespace lexwend::Settings {

inline constexpr std::string_view kHotKeyCodeKey = "hotKeyCode";                      // integer
inline constexpr std::string_view kHotKeyModifiersKey = "hotKeyModifiers";            // integer
inline constexpr std::string_view kSwitchLayoutAfterKey = "switchLayoutAfterFix";     // boolean
inline constexpr std::string_view kCompatModeKey = "compatMode";                      // boolean
inline constexpr std::string_view kDidRegisterLoginItemKey = "didRegisterLoginItem";  // boolean
inline constexpr std::string_view kMayBindKeyKey = "mayBindKey";                      // boolean
inline constexpr std::string_view kMayInstallKey = "mayInstall";                      // boolean

/// The store itself, for writing.
platform::UserDefaults& d();

/// F2 by default. A stored number outside of 32 unsigned bits is fatal.
platform::KeyCode hotKeyCode();
/// None by default. A stored number outside of 32 unsigned bits is fatal.
platform::Modifiers hotKeyModifiers();
/// Whether a fix makes the layout of the target language active; true by default.
bool switchLayoutAfter();
/// Whether every fix goes through the clipboard; false by default.
bool compatMode();

/// Writes a combination: the key code first, then the mask.
void setHotKey(platform::KeyCode keyCode, platform::Modifiers modifiers);

}  // namespace lexwend::Settings
