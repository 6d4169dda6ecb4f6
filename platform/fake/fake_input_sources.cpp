// SPDX-License-Identifier: MIT
#include "platform/fake/fake_input_sources.h"

#include <algorithm>
#include <utility>

namespace lexwend::platform {
namespace {

class FakeInputSource : public InputSource {
 public:
  explicit FakeInputSource(FakeLayout data) : layout(std::move(data)) {}
  const FakeLayout layout;
};

/// The data of a layout. It may outlive its source.
class FakeLayoutData : public KeyLayoutData {
 public:
  explicit FakeLayoutData(FakeLayout data) : layout(std::move(data)) {}
  bool empty() const override { return layout.data == FakeLayout::Data::empty; }
  const FakeLayout layout;
};

const FakeLayout* layoutOf(const InputSourceRef& source) {
  const auto* made = dynamic_cast<const FakeInputSource*>(source.get());
  return made == nullptr ? nullptr : &made->layout;
}

std::string idOf(const FakeLayout& layout) {
  const auto* id = std::get_if<std::string>(&layout.id);
  return id == nullptr ? std::string() : *id;
}

/// Layout tables are UTF-8 in which a surrogate may be encoded like any scalar.
std::u16string utf16(std::string_view text) {
  std::u16string units;
  for (std::size_t i = 0; i < text.size();) {
    const auto lead = static_cast<unsigned char>(text[i]);
    const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    char32_t scalar = length == 1 ? lead : lead & (0xFFU >> (length + 1));
    for (std::size_t k = 1; k < length && i + k < text.size(); ++k) {
      scalar = (scalar << 6U) | (static_cast<unsigned char>(text[i + k]) & 0x3FU);
    }
    i += length;
    if (scalar >= 0x10000) {
      units.push_back(static_cast<char16_t>(0xD800 + ((scalar - 0x10000) >> 10U)));
      units.push_back(static_cast<char16_t>(0xDC00 + ((scalar - 0x10000) & 0x3FFU)));
    } else {
      units.push_back(static_cast<char16_t>(scalar));
    }
  }
  return units;
}

}  // namespace

FakeInputSources::FakeInputSources(FakeSystem& system) : system_(system) {
  setLayouts({usLayout(), hebrewLayout()});
}

std::optional<std::vector<InputSourceRef>> FakeInputSources::createInputSourceList(
    const InputSourceFilter& filter, bool includeAllInstalled) {
  const auto truth = [](bool value) { return value ? "true" : "false"; };
  std::string call = "inputSources.createInputSourceList";
  if (filter.type) call += " type=keyboardLayout";
  if (filter.isEnabled) call += std::string(" isEnabled=") + truth(*filter.isEnabled);
  system_.called(call + " all=" + truth(includeAllInstalled));
  if (system_.failure(FakeOperation::createInputSourceList)) return std::nullopt;
  std::vector<InputSourceRef> list;
  for (const auto& source : sources_) {
    const FakeLayout& layout = *layoutOf(source);
    if (!includeAllInstalled && !layout.enabled) continue;
    if (filter.isEnabled && *filter.isEnabled != layout.enabled) continue;
    if (filter.type && !layout.isKeyboardLayout) continue;
    list.push_back(source);
  }
  return list;
}

InputSourceValue FakeInputSources::property(const InputSourceRef& source, InputSourceProperty key) {
  system_.called("inputSources.property " + std::to_string(static_cast<int>(key)));
  const FakeLayout* layout = layoutOf(source);
  if (layout == nullptr) return {};
  switch (key) {
    case InputSourceProperty::id:
      return std::visit([](const auto& value) -> InputSourceValue { return value; }, layout->id);
    case InputSourceProperty::languages:
      return std::visit([](const auto& value) -> InputSourceValue { return value; }, layout->languages);
    case InputSourceProperty::unicodeKeyLayoutData:
      if (layout->data == FakeLayout::Data::absent) return {};
      if (layout->data == FakeLayout::Data::mistyped) return MistypedProperty{};
      return KeyLayoutDataRef(std::make_shared<FakeLayoutData>(*layout));
  }
  return {};
}

InputSourceRef FakeInputSources::copyCurrentKeyboardLayoutInputSource() {
  system_.called("inputSources.copyCurrentKeyboardLayoutInputSource");
  if (system_.failure(FakeOperation::copyCurrentLayout)) return nullptr;
  return current_;
}

void FakeInputSources::select(const InputSourceRef& source) {
  system_.called("inputSources.select");
  const FakeLayout* layout = layoutOf(source);
  if (layout == nullptr) {
    system_.complain("inputSources.select of a source that this host did not make");
    return;
  }
  selections_.push_back(idOf(*layout));
  if (system_.failure(FakeOperation::selectInputSource)) return;
  // The system refuses a source that was removed or disabled meanwhile.
  if (layout->enabled && std::find(sources_.begin(), sources_.end(), source) != sources_.end()) {
    current_ = source;
  }
}

std::uint32_t FakeInputSources::keyboardType() {
  system_.called("inputSources.keyboardType");
  return keyboardType_;
}

std::optional<std::u16string> FakeInputSources::translate(const KeyLayoutData& data,
                                                          const KeyTranslation& translation,
                                                          std::uint32_t& deadKeyState) {
  translations_.push_back(translation);
  const auto* made = dynamic_cast<const FakeLayoutData*>(&data);
  if (made == nullptr || made->empty()) {
    system_.complain("inputSources.translate over data that this host did not make or that is empty");
    return std::nullopt;
  }
  const FakeLayout& layout = made->layout;
  const bool shifted = translation.modifiers == kShiftKey;
  const auto keyCode = static_cast<int>(translation.keyCode);
  const std::pair<int, bool> place{keyCode, shifted};
  if (layout.brokenKeys.contains(place)) return std::nullopt;
  const auto key = layout.keys.find(keyCode);
  if (key == layout.keys.end() || (translation.modifiers != kNoModifiers && !shifted)) {
    return std::u16string();
  }
  const std::u16string text = utf16(shifted ? key->second.shifted : key->second.plain);
  if (layout.deadKeys.contains(place) && translation.options == 0) {
    deadKeyState = text.empty() ? 1 : text.front();
    return std::u16string();
  }
  // A dead-key state from an earlier key puts the accent before the character.
  std::u16string result;
  if (deadKeyState != 0) result.push_back(static_cast<char16_t>(deadKeyState));
  deadKeyState = 0;
  result += text;
  if (result.size() > translation.maxLength) return std::nullopt;
  return result;
}

Registration FakeInputSources::observeEnabledLayoutsChanged(std::function<void()> handler) {
  system_.called("inputSources.observeEnabledLayoutsChanged");
  return observers_.add(std::move(handler));
}

void FakeInputSources::setLayouts(std::vector<FakeLayout> layouts) {
  const std::string before = currentId();
  sources_.clear();
  current_ = nullptr;
  for (auto& layout : layouts) sources_.push_back(std::make_shared<FakeInputSource>(std::move(layout)));
  for (const auto& source : sources_) {
    const FakeLayout& layout = *layoutOf(source);
    if (layout.enabled && layout.isKeyboardLayout && !current_) current_ = source;
  }
  if (!before.empty()) use(before);
}

void FakeInputSources::changeLayouts(std::vector<FakeLayout> layouts) {
  setLayouts(std::move(layouts));
  for (const auto& observer : observers_.all()) (*observer)();
}

bool FakeInputSources::use(std::string_view id) {
  for (const auto& source : sources_) {
    const FakeLayout& layout = *layoutOf(source);
    if (!layout.enabled || idOf(layout) != id) continue;
    current_ = source;
    return true;
  }
  return false;
}

std::string FakeInputSources::currentId() const {
  return current_ ? idOf(*layoutOf(current_)) : std::string();
}

std::string FakeInputSources::typed(int keyCode, bool shifted) const {
  if (!current_) return {};
  const FakeLayout& layout = *layoutOf(current_);
  const auto key = layout.keys.find(keyCode);
  if (key == layout.keys.end() || layout.deadKeys.contains({keyCode, shifted})) return {};
  return shifted ? key->second.shifted : key->second.plain;
}

}  // namespace lexwend::platform
