// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/layout_map.h"
#include "platform/input_sources.h"

namespace lexwend {

/// One keyboard layout that the user has enabled.
struct KeyboardLayout {
  platform::InputSourceRef source;  ///< the system's handle, alive as long as any copy
  std::string id;  ///< for example "com.apple.keylayout.US"; empty when the system reports none
  std::vector<std::string> languages;  ///< language codes in the system's order; may be empty
};

/// Which layouts the user has enabled, which of them serves a language, and what each of its keys types.
/// Keeps nothing: every call asks the system afresh. A failure of the system is an empty or absent result.
/// Main thread only.
namespace InputSources {

using lexwend::KeyChars;

/// The enabled keyboard layouts in the system's order.
std::vector<KeyboardLayout> enabledKeyboardLayouts();

/// The enabled layout to use for a language code, compared to the letter. For "en" the first ABC or US
/// layout; else the first layout whose first language it is; else the first that lists it anywhere; else
/// none.
std::optional<KeyboardLayout> keyboardLayout(std::string_view language);

/// What the keys 0 to 50 of a layout type, all 51 of them. None when the layout has no key data; an empty
/// table when the data is empty.
std::optional<KeyTable> keyTable(const KeyboardLayout& layout);

/// UTF-8 text that one key types. Empty for a
/// dead key, for a lone surrogate and on an error of the system. A key code outside of 0 to 65535 is fatal.
std::string translate(const platform::KeyLayoutData& data, int keyCode, platform::Modifiers modifiers);

/// A property that is a list of strings; empty when it is absent or anything else.
std::vector<std::string> arrayProp(const platform::InputSourceRef& source, platform::InputSourceProperty key);

/// Whether the layout in use lists "he" among its languages; false when the system reports no layout.
bool currentLayoutIsHebrew();

/// The key tables of the enabled layouts for "en" and "he". Where one of the two is missing, what is not yet
/// read stays unread: no map is built then.
KeyTables keyTables();

}  // namespace InputSources
}  // namespace lexwend
