// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/input_sources.h"

struct xkb_context;
struct xkb_keymap;
struct xkb_state;

namespace lexwend::platform {

/// One layout of a configuration: "us", "us(dvorak)", "il".
struct XkbLayoutName {
  std::string layout;
  std::string variant;
  bool operator==(const XkbLayoutName&) const = default;
  /// The layout, followed by the variant in parentheses if there is one.
  std::string id() const;
};

/// Parses the value of _XKB_RULES_NAMES. It holds rules, model, layouts, variants and options, each ended by
/// a NUL. Layouts and variants are lists with commas.
std::vector<XkbLayoutName> parseRulesNames(std::string_view value);

/// The languages of a layout from the registry of keyboard layouts. An ISO 639 code becomes a two-letter code
/// where there is one ("heb" is "he"). A variant without an entry has its layout's languages. A layout
/// without an entry has none. The first call reads the registry from disk.
std::vector<std::string> languagesOf(const XkbLayoutName& layout);

/// The layout of a description in the registry, as "Hebrew" or "English (US)"; nothing for one that is not
/// there. The first call reads the registry from disk.
std::optional<XkbLayoutName> layoutDescribedAs(const std::string& description);

/// A layout of the user's, as the services list it.
class XkbInputSource : public InputSource {
 public:
  XkbInputSource(XkbLayoutName layoutName, std::uint32_t groupIndex)
      : name(std::move(layoutName)), group(groupIndex) {}
  const XkbLayoutName name;
  const std::uint32_t group;
};

/// The place of a source among the layouts that there are now: its own, or where that is another layout
/// since, the first of its name; nothing where there is none.
std::optional<std::size_t> placeOf(const XkbInputSource& source, const std::vector<XkbLayoutName>& layouts);

/// What the keys of a keymap's group type.
std::shared_ptr<const KeyLayoutData> keyLayoutData(std::shared_ptr<xkb_keymap> keymap, std::uint32_t group);
/// InputSourceService::translate() of such data. Of the modifiers it knows Shift and Caps Lock. A key that
/// has no place on a PC keyboard types nothing.
std::optional<std::u16string> translateByKeymap(const KeyLayoutData& data, const KeyTranslation& translation);

/// Of the keys that type, what they type in the first groups, as bytes to compare.
std::string typedIn(xkb_keymap& keymap, std::size_t groups);

/// The key that gives the keysym without modifiers, in the first of the groups in which one does; nothing
/// where none does or where it has no place on a PC keyboard.
std::optional<KeyCode> keyGiving(xkb_keymap& keymap, std::uint32_t keysym);

}  // namespace lexwend::platform
