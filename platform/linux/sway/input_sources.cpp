// SPDX-License-Identifier: MIT
#include "platform/linux/sway/input_sources.h"

#include <xkbcommon/xkbcommon.h>

namespace lexwend::platform {
namespace {

XkbLayoutName layoutNamed(const char* description) {
  return layoutDescribedAs(description).value_or(XkbLayoutName{description, ""});
}

}  // namespace

SwayInputSources::SwayInputSources(std::shared_ptr<SwayIpc> sway, std::string ownLayout)
    : sway_(std::move(sway)),
      ownLayout_(std::move(ownLayout)),
      context_(xkb_context_new(XKB_CONTEXT_NO_FLAGS), xkb_context_unref) {
  observation_ = sway_->observe([this](const SwayEvent& event) {
    if (event.kind == SwayEventKind::input) handleInput(event.details);
  });
}

SwayInputSources::~SwayInputSources() = default;

std::optional<SwayInputSources::Keyboard> SwayInputSources::usersKeyboard() {
  const JsonRef inputs = sway_->inputs();
  if (!inputs) return std::nullopt;
  std::optional<Keyboard> best;
  JsonArray* list = json_node_get_array(inputs.get());
  for (guint i = 0; i < json_array_get_length(list); ++i) {
    JsonObject* input = json_array_get_object_element(list, i);
    if (textOf(input, "type") != "keyboard" || json_object_has_member(input, "xkb_layout_names") == FALSE) {
      continue;
    }
    JsonArray* names = json_object_get_array_member(input, "xkb_layout_names");
    const guint count = json_array_get_length(names);
    if (count == 0 || json_array_get_string_element(names, 0) == ownLayout_) continue;
    Keyboard keyboard{textOf(input, "identifier"), {}, 0};
    for (guint j = 0; j < count; ++j) {
      keyboard.layouts.push_back(layoutNamed(json_array_get_string_element(names, j)));
    }
    keyboard.active = static_cast<std::size_t>(
        json_object_get_int_member_with_default(input, "xkb_active_layout_index", 0));
    const bool isLastChanged = keyboard.identifier == lastChanged_;
    if (!best || isLastChanged || keyboard.layouts.size() > best->layouts.size()) best = std::move(keyboard);
    if (isLastChanged) break;
  }
  return best;
}

std::optional<std::vector<InputSourceRef>> SwayInputSources::createInputSourceList(
    const InputSourceFilter& filter, bool /*includeAllInstalled*/) {
  const auto keyboard = usersKeyboard();
  if (!keyboard) return std::nullopt;
  std::vector<InputSourceRef> sources;
  if (filter.isEnabled == false) {
    return sources;  // what a keyboard has is enabled
  }
  for (std::size_t group = 0; group < keyboard->layouts.size(); ++group) {
    sources.push_back(
        std::make_shared<XkbInputSource>(keyboard->layouts[group], static_cast<std::uint32_t>(group)));
  }
  return sources;
}

InputSourceValue SwayInputSources::property(const InputSourceRef& source, InputSourceProperty key) {
  const auto* xkbSource = dynamic_cast<const XkbInputSource*>(source.get());
  if (xkbSource == nullptr) {
    return std::monostate{};
  }
  switch (key) {
    case InputSourceProperty::id:
      return xkbSource->name.id();
    case InputSourceProperty::languages:
      return languagesOf(xkbSource->name);
    case InputSourceProperty::unicodeKeyLayoutData: {
      const xkb_rule_names names{"evdev", "pc105", xkbSource->name.layout.c_str(),
                                 xkbSource->name.variant.c_str(), ""};
      std::shared_ptr<xkb_keymap> keymap(
          xkb_keymap_new_from_names(context_.get(), &names, XKB_KEYMAP_COMPILE_NO_FLAGS), xkb_keymap_unref);
      if (!keymap) {
        return std::monostate{};
      }
      return keyLayoutData(std::move(keymap), 0);
    }
  }
  return std::monostate{};
}

InputSourceRef SwayInputSources::copyCurrentKeyboardLayoutInputSource() {
  const auto keyboard = usersKeyboard();
  if (!keyboard || keyboard->active >= keyboard->layouts.size()) return nullptr;
  return std::make_shared<XkbInputSource>(keyboard->layouts[keyboard->active],
                                          static_cast<std::uint32_t>(keyboard->active));
}

/// Each keyboard by its own name: the one of this program's own has one layout only.
void SwayInputSources::select(const InputSourceRef& source) {
  const auto* xkbSource = dynamic_cast<const XkbInputSource*>(source.get());
  const auto keyboard = usersKeyboard();
  if (xkbSource == nullptr || !keyboard) return;
  const auto place = placeOf(*xkbSource, keyboard->layouts);
  if (place) sway_->run("input type:keyboard xkb_switch_layout " + std::to_string(*place));
}

std::uint32_t SwayInputSources::keyboardType() {
  return 0;
}

std::optional<std::u16string> SwayInputSources::translate(const KeyLayoutData& data,
                                                          const KeyTranslation& translation,
                                                          std::uint32_t& /*deadKeyState*/) {
  return translateByKeymap(data, translation);
}

Registration SwayInputSources::observeEnabledLayoutsChanged(std::function<void()> handler) {
  if (handlers_.count() == 0) {
    const auto keyboard = usersKeyboard();
    known_ = keyboard ? keyboard->layouts : std::vector<XkbLayoutName>();
  }
  return handlers_.add(std::move(handler));
}

void SwayInputSources::handleInput(JsonObject* details) {
  if (textOf(details, "change") == "xkb_layout" && json_object_has_member(details, "input") != FALSE) {
    lastChanged_ = textOf(json_object_get_object_member(details, "input"), "identifier");
    return;
  }
  if (handlers_.count() == 0) return;
  const auto keyboard = usersKeyboard();
  std::vector<XkbLayoutName> now = keyboard ? keyboard->layouts : std::vector<XkbLayoutName>();
  if (now == known_) return;
  known_ = std::move(now);
  for (const auto& handler : handlers_.all()) (*handler)();
}

}  // namespace lexwend::platform
