// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "platform/input_sources.h"

namespace lexwend::platform {

/// What one key types. The texts are UTF-8 in which a surrogate may be encoded like any scalar:
/// "\xED\xA0\x80" is a lone U+D800.
struct FakeKey {
  std::string plain, shifted;
};

/// One input source as data. The members say what the system would answer.
struct FakeLayout {
  /// std::monostate: no such property.
  std::variant<std::monostate, MistypedProperty, std::string> id;
  std::variant<std::monostate, MistypedProperty, std::vector<std::string>> languages;
  enum class Data { present, absent, empty, mistyped };
  Data data = Data::present;
  std::map<int, FakeKey> keys;  ///< by macOS virtual key code
  /// (key code, with Shift): a dead key. Its text is the accent that the next key would get.
  std::set<std::pair<int, bool>> deadKeys;
  /// (key code, with Shift): the system reports an error.
  std::set<std::pair<int, bool>> brokenKeys;
  bool enabled = true;
  bool isKeyboardLayout = true;  ///< false: an input method or a palette
};

/// Ready-made layouts.
FakeLayout usLayout();       ///< "com.apple.keylayout.US", en
FakeLayout abcLayout();      ///< "com.apple.keylayout.ABC", en: the same keys
FakeLayout britishLayout();  ///< "com.apple.keylayout.British", en: the sterling sign on Shift+3
FakeLayout hebrewLayout();   ///< "com.apple.keylayout.Hebrew", he
FakeLayout russianLayout();  ///< "com.apple.keylayout.Russian", ru

}  // namespace lexwend::platform
