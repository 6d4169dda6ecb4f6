// SPDX-License-Identifier: MIT
#include "platform/linux/sway/input_sources.h"

#include <utility>

namespace lexwend::platform {
namespace {

XkbLayoutName layoutNamed(const char* description) {
  return layoutDescribedAs(description).value_or(XkbLayoutName{description, ""});
}

}  // namespace

SwayInputSources::SwayInputSources(std::shared_ptr<SwayIpc> sway, std::string ownLayout)
    : sway_(std::move(sway)), ownLayout_(std::move(ownLayout)) {
  observation_ = sway_->observe([this](const SwayEvent& event) {
    if (event.kind == SwayEventKind::input) handleInput(event.details);
  });
}

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

std::optional<XkbInputSources::Layouts> SwayInputSources::layouts() {
  auto keyboard = usersKeyboard();
  if (!keyboard) return std::nullopt;
  return Layouts{std::move(keyboard->layouts), keyboard->active};
}

/// Each keyboard by its own name: the one of this program's own has one layout only.
void SwayInputSources::selectLayout(const std::vector<XkbLayoutName>& /*enabled*/, std::size_t place) {
  sway_->run("input type:keyboard xkb_switch_layout " + std::to_string(place));
}

void SwayInputSources::handleInput(JsonObject* details) {
  const std::string change = textOf(details, "change");
  if (change == "xkb_layout" && json_object_has_member(details, "input") != FALSE) {
    lastChanged_ = textOf(json_object_get_object_member(details, "input"), "identifier");
    return;
  }
  if (change == "xkb_keymap") forgetKeymaps();
  reportChange();
}

}  // namespace lexwend::platform
