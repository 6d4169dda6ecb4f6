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
/// Keeps no state: every call asks the system again. A failure of the system gives an empty or absent result.
/// Main thread only.
namespace InputSources {

using lexwend::KeyChars;

/// The enabled keyboard layouts in the system's order.
std::vector<KeyboardLayout> enabledKeyboardLayouts();

/// The enabled layout for a language code: the first of these that exists. For "en" only, the first ABC or US
/// layout. The first layout whose first language has exactly this code. The first layout that lists the code
/// anywhere.
std::optional<KeyboardLayout> keyboardLayout(std::string_view language);

/// What each of the keys 0 to 50 of a layout types. None when the layout has no key data. An empty table when
/// the data is empty.
std::optional<KeyTable> keyTable(const KeyboardLayout& layout);

/// The text that one key types, in UTF-8. Empty for a dead key, for a lone surrogate and when the system
/// reports an error. A key code outside of 0 to 65535 is fatal.
std::string translate(const platform::KeyLayoutData& data, int keyCode, platform::Modifiers modifiers);

/// A property that is a list of strings; empty when it is absent or anything else.
std::vector<std::string> arrayProp(const platform::InputSourceRef& source, platform::InputSourceProperty key);

/// Whether the layout in use lists "he" among its languages; false when the system reports no layout.
bool currentLayoutIsHebrew();

/// The key tables of the enabled layouts for "en" and "he". Without both layouts no map can be built, so
/// reading stops at the first that is missing.
KeyTables keyTables();

}  // namespace InputSources
}  // namespace lexwend
