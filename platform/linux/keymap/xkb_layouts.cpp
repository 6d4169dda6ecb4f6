// SPDX-License-Identifier: MIT
#include "platform/linux/keymap/xkb_layouts.h"

#include <algorithm>
#include <array>
#include <map>

#include <unicode/uloc.h>
#include <xkbcommon/xkbcommon.h>
#include <xkbcommon/xkbregistry.h>

#include "platform/linux/keymap/mac_key_codes.h"

namespace lexwend::platform {
namespace {

// The Carbon bit of Caps Lock (alphaLock).
constexpr Modifiers kAlphaLock{0x0400};

// The key codes of the main typing block.
constexpr std::uint16_t kLastTypingKeyCode = 50;

struct StateUnref {
  void operator()(xkb_state* state) const { xkb_state_unref(state); }
};

class XkbKeyLayoutData : public KeyLayoutData {
 public:
  XkbKeyLayoutData(std::shared_ptr<xkb_keymap> keymap, xkb_layout_index_t group)
      : keymap_(std::move(keymap)), group_(group), state_(xkb_state_new(keymap_.get())) {}
  bool empty() const override { return state_ == nullptr; }

  std::u16string typed(xkb_keycode_t key, bool shift, bool capsLock) const {
    xkb_state_update_mask(state_.get(), shift ? modifier(XKB_MOD_NAME_SHIFT) : 0, 0,
                          capsLock ? modifier(XKB_MOD_NAME_CAPS) : 0, 0, 0, group_);
    const xkb_keysym_t* keysyms = nullptr;
    const int count = xkb_state_key_get_syms(state_.get(), key, &keysyms);
    std::u16string text;
    for (int i = 0; i < count; ++i) {
      appendScalar(text, xkb_keysym_to_utf32(keysyms[i]));  // 0 for a dead key and for one that types nothing
    }
    return text;
  }

 private:
  xkb_mod_mask_t modifier(const char* name) const {
    const xkb_mod_index_t index = xkb_keymap_mod_get_index(keymap_.get(), name);
    return index == XKB_MOD_INVALID ? 0 : xkb_mod_mask_t{1} << index;
  }
  static void appendScalar(std::u16string& text, std::uint32_t scalar) {
    constexpr std::uint32_t kFirstSupplementary = 0x10000;
    if (scalar >= kFirstSupplementary) {
      const std::uint32_t offset = scalar - kFirstSupplementary;
      text.push_back(static_cast<char16_t>(0xD800 + (offset >> 10)));
      text.push_back(static_cast<char16_t>(0xDC00 + (offset & 0x3FF)));
    } else if (scalar != 0) {
      text.push_back(static_cast<char16_t>(scalar));
    }
  }

  std::shared_ptr<xkb_keymap> keymap_;
  xkb_layout_index_t group_;
  std::unique_ptr<xkb_state, StateUnref> state_;
};

std::vector<std::string_view> split(std::string_view text, char separator) {
  std::vector<std::string_view> parts;
  for (;;) {
    const std::size_t end = text.find(separator);
    parts.push_back(text.substr(0, end));
    if (end == std::string_view::npos) return parts;
    text.remove_prefix(end + 1);
  }
}

std::string twoLetterCode(const char* iso639) {
  std::array<char, ULOC_LANG_CAPACITY> language{};
  UErrorCode status = U_ZERO_ERROR;
  const std::int32_t length =
      uloc_getLanguage(iso639, language.data(), static_cast<std::int32_t>(language.size()), &status);
  return U_SUCCESS(status) != 0 && length > 0 ? std::string(language.data()) : std::string(iso639);
}

struct Registry {
  std::map<std::string, std::vector<std::string>> languages;  // of a layout's id
  std::map<std::string, XkbLayoutName> described;             // of a description, the first of its layouts
};

Registry readRegistry(rxkb_context_flags extent) {
  Registry registry;
  const std::unique_ptr<rxkb_context, rxkb_context* (*)(rxkb_context*)> context(rxkb_context_new(extent),
                                                                                rxkb_context_unref);
  if (!context || !rxkb_context_parse(context.get(), "evdev")) return registry;
  rxkb_layout* next = nullptr;
  for (rxkb_layout* layout = rxkb_layout_first(context.get()); layout != nullptr; layout = next) {
    const char* variant = rxkb_layout_get_variant(layout);
    const XkbLayoutName name{rxkb_layout_get_name(layout), variant != nullptr ? variant : ""};
    if (const char* description = rxkb_layout_get_description(layout)) {
      registry.described.emplace(description, name);
    }
    std::vector<std::string>& languages = registry.languages[name.id()];
    for (rxkb_iso639_code* code = rxkb_layout_get_iso639_first(layout); code != nullptr;
         code = rxkb_iso639_code_next(code)) {
      languages.push_back(twoLetterCode(rxkb_iso639_code_get_code(code)));
    }
    next = rxkb_layout_next(layout);
    rxkb_layout_unref(layout);
  }
  return registry;
}

const Registry& commonLayouts() {
  static const Registry kCommon = readRegistry(RXKB_CONTEXT_NO_FLAGS);
  return kCommon;
}

/// Rare layouts are in a second list, which takes long to read.
const Registry& allLayouts() {
  static const Registry kAll = readRegistry(RXKB_CONTEXT_LOAD_EXOTIC_RULES);
  return kAll;
}

}  // namespace

std::string XkbLayoutName::id() const {
  return variant.empty() ? layout : layout + "(" + variant + ")";
}

std::vector<XkbLayoutName> parseRulesNames(std::string_view value) {
  constexpr std::size_t kLayouts = 2;
  constexpr std::size_t kVariants = 3;
  const std::vector<std::string_view> fields = split(value, '\0');
  if (fields.size() <= kLayouts || fields[kLayouts].empty()) {
    return {};
  }
  const std::vector<std::string_view> layouts = split(fields[kLayouts], ',');
  std::vector<std::string_view> variants;
  if (fields.size() > kVariants) variants = split(fields[kVariants], ',');
  std::vector<XkbLayoutName> names;
  for (std::size_t i = 0; i < layouts.size(); ++i) {
    names.push_back(
        {std::string(layouts[i]), i < variants.size() ? std::string(variants[i]) : std::string()});
  }
  return names;
}

std::vector<std::string> languagesOf(const XkbLayoutName& layout) {
  const auto& common = commonLayouts().languages;
  auto entry = common.find(layout.id());
  if (entry != common.end()) return entry->second;
  const auto& all = allLayouts().languages;
  entry = all.find(layout.id());
  if (entry == all.end()) entry = all.find(layout.layout);
  return entry == all.end() ? std::vector<std::string>() : entry->second;
}

std::optional<XkbLayoutName> layoutDescribedAs(const std::string& description) {
  for (const Registry& (*registry)() : {&commonLayouts, &allLayouts}) {
    const auto& described = registry().described;
    const auto entry = described.find(description);
    if (entry != described.end()) return entry->second;
  }
  return std::nullopt;
}

std::optional<std::size_t> placeOf(const XkbInputSource& source, const std::vector<XkbLayoutName>& layouts) {
  if (source.group < layouts.size() && layouts[source.group] == source.name) return source.group;
  const auto found = std::find(layouts.begin(), layouts.end(), source.name);
  return found == layouts.end() ? std::nullopt
                                : std::optional(static_cast<std::size_t>(found - layouts.begin()));
}

std::shared_ptr<const KeyLayoutData> keyLayoutData(std::shared_ptr<xkb_keymap> keymap, std::uint32_t group) {
  return std::make_shared<const XkbKeyLayoutData>(std::move(keymap), group);
}

std::optional<std::u16string> translateByKeymap(const KeyLayoutData& data,
                                                const KeyTranslation& translation) {
  const auto* layout = dynamic_cast<const XkbKeyLayoutData*>(&data);
  if (layout == nullptr || layout->empty()) return std::nullopt;
  const auto key = xFromMacKeyCode(translation.keyCode);
  if (!key) return std::u16string();
  std::u16string text = layout->typed(*key, overlap(translation.modifiers, kShiftKey),
                                      overlap(translation.modifiers, kAlphaLock));
  if (text.size() > translation.maxLength) return std::nullopt;
  return text;
}

std::string typedIn(xkb_keymap& keymap, std::size_t groups) {
  std::string signature;
  for (xkb_layout_index_t group = 0; group < groups; ++group) {
    for (std::uint16_t macKeyCode = 0; macKeyCode <= kLastTypingKeyCode; ++macKeyCode) {
      const xkb_keycode_t key = xFromMacKeyCode(KeyCode{macKeyCode}).value_or(0);
      for (const xkb_level_index_t level : {0U, 1U}) {
        const xkb_keysym_t* keysyms = nullptr;
        const int count = xkb_keymap_key_get_syms_by_level(&keymap, key, group, level, &keysyms);
        for (int i = 0; i < count; ++i) signature += std::to_string(keysyms[i]) + ' ';
        signature += ';';
      }
    }
  }
  return signature;
}

std::optional<KeyCode> keyGiving(xkb_keymap& keymap, std::uint32_t keysym) {
  for (xkb_layout_index_t group = 0; group < xkb_keymap_num_layouts(&keymap); ++group) {
    for (xkb_keycode_t key = xkb_keymap_min_keycode(&keymap); key <= xkb_keymap_max_keycode(&keymap); ++key) {
      const xkb_keysym_t* given = nullptr;
      const int count = xkb_keymap_key_get_syms_by_level(&keymap, key, group, 0, &given);
      if (count != 1 || given[0] != keysym) continue;
      if (const auto found = macFromXKeyCode(key)) return found;
    }
  }
  return std::nullopt;
}

}  // namespace lexwend::platform
