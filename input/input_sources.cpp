// SPDX-License-Identifier: MIT
#include "input/input_sources.h"

#include <algorithm>
#include <limits>
#include <utility>
#include <variant>

#include <unicode/ustring.h>

#include "support/fatal.h"

namespace lexwend::InputSources {
namespace {

using platform::InputSourceProperty;
using platform::InputSourceRef;

constexpr int kFirstKeyCode = 0;
constexpr int kLastKeyCode = 50;  // the main typing block; the keypad and the function keys lie above
constexpr std::size_t kMaxTranslatedLength = 8;  // UTF-16 code units

std::string stringProp(const InputSourceRef& source, InputSourceProperty key) {
  auto value = platform::inputSourceService().property(source, key);
  auto* text = std::get_if<std::string>(&value);
  return text != nullptr ? std::move(*text) : std::string();
}

bool contains(const std::vector<std::string>& languages, std::string_view language) {
  return std::find(languages.begin(), languages.end(), language) != languages.end();
}

/// Empty when a surrogate stands alone: it is no character, and U+FFFD in its place would be one.
std::string utf8FromUtf16(const std::u16string& units) {
  constexpr std::size_t kMostBytesOfAUnit = 3;
  std::string out(units.size() * kMostBytesOfAUnit, '\0');
  std::int32_t length = 0;
  UErrorCode status = U_ZERO_ERROR;
  u_strToUTF8(out.data(), static_cast<std::int32_t>(out.size()), &length, units.data(),
              static_cast<std::int32_t>(units.size()), &status);
  out.resize(U_SUCCESS(status) ? static_cast<std::size_t>(length) : 0);
  return out;
}

}  // namespace

std::vector<KeyboardLayout> enabledKeyboardLayouts() {
  platform::InputSourceFilter filter;
  filter.type = platform::InputSourceType::keyboardLayout;
  filter.isEnabled = true;
  const auto sources =
      platform::inputSourceService().createInputSourceList(filter, /*includeAllInstalled=*/false);

  std::vector<KeyboardLayout> layouts;
  if (!sources) return layouts;
  layouts.reserve(sources->size());
  for (const InputSourceRef& source : *sources) {
    layouts.push_back({source, stringProp(source, InputSourceProperty::id),
                       arrayProp(source, InputSourceProperty::languages)});
  }
  return layouts;
}

std::optional<KeyboardLayout> keyboardLayout(std::string_view language) {
  const std::vector<KeyboardLayout> layouts = enabledKeyboardLayouts();
  if (language == "en") {
    for (const KeyboardLayout& layout : layouts) {
      if (layout.id == "com.apple.keylayout.ABC" || layout.id == "com.apple.keylayout.US") return layout;
    }
  }
  for (const KeyboardLayout& layout : layouts) {
    if (!layout.languages.empty() && layout.languages.front() == language) return layout;
  }
  for (const KeyboardLayout& layout : layouts) {
    if (contains(layout.languages, language)) return layout;
  }
  return std::nullopt;
}

std::optional<KeyTable> keyTable(const KeyboardLayout& layout) {
  const auto value =
      platform::inputSourceService().property(layout.source, InputSourceProperty::unicodeKeyLayoutData);
  const auto* data = std::get_if<platform::KeyLayoutDataRef>(&value);
  if (data == nullptr || *data == nullptr) return std::nullopt;

  KeyTable table;
  if ((*data)->empty()) return table;
  for (int keyCode = kFirstKeyCode; keyCode <= kLastKeyCode; ++keyCode) {
    std::string plain = translate(**data, keyCode, platform::kNoModifiers);
    std::string shifted = translate(**data, keyCode, platform::kShiftKey);
    table[keyCode] = KeyChars{std::move(plain), std::move(shifted)};
  }
  return table;
}

std::string translate(const platform::KeyLayoutData& data, int keyCode, platform::Modifiers modifiers) {
  if (keyCode < 0 || keyCode > std::numeric_limits<std::uint16_t>::max()) {
    fatal("a key code does not fit into 16 unsigned bits");
  }
  platform::InputSourceService& service = platform::inputSourceService();
  platform::KeyTranslation translation;
  translation.keyCode = platform::KeyCode{static_cast<std::uint16_t>(keyCode)};
  translation.action = platform::KeyAction::down;
  translation.modifiers = modifiers;
  translation.keyboardType = service.keyboardType();
  translation.options = 0;
  translation.maxLength = kMaxTranslatedLength;
  std::uint32_t deadKeyState = 0;  // discarded, since every key is translated by itself
  const auto units = service.translate(data, translation, deadKeyState);
  return units ? utf8FromUtf16(*units) : std::string();
}

std::vector<std::string> arrayProp(const InputSourceRef& source, InputSourceProperty key) {
  auto value = platform::inputSourceService().property(source, key);
  auto* list = std::get_if<std::vector<std::string>>(&value);
  return list != nullptr ? std::move(*list) : std::vector<std::string>();
}

bool currentLayoutIsHebrew() {
  const InputSourceRef source = platform::inputSourceService().copyCurrentKeyboardLayoutInputSource();
  if (source == nullptr) return false;
  return contains(arrayProp(source, InputSourceProperty::languages), "he");
}

KeyTables keyTables() {
  KeyTables tables;
  const auto latin = keyboardLayout("en");
  const auto hebrew = latin ? keyboardLayout("he") : std::nullopt;
  if (hebrew) tables.latin = keyTable(*latin);
  if (tables.latin) tables.hebrew = keyTable(*hebrew);
  return tables;
}

}  // namespace lexwend::InputSources
