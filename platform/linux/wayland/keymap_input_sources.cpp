// SPDX-License-Identifier: MIT
#include "platform/linux/wayland/keymap_input_sources.h"

#include <utility>

#include <xkbcommon/xkbcommon.h>

namespace lexwend::platform {
namespace {

XkbLayoutName nameOf(xkb_keymap& keymap, xkb_layout_index_t group) {
  const char* description = xkb_keymap_layout_get_name(&keymap, group);
  if (description == nullptr) return {};
  return layoutDescribedAs(description).value_or(XkbLayoutName{description, ""});
}

}  // namespace

KeymapInputSources::KeymapInputSources(std::function<std::shared_ptr<xkb_keymap>()> keymap)
    : keymap_(std::move(keymap)) {}

std::optional<XkbInputSources::Layouts> KeymapInputSources::layouts() {
  const auto keymap = keymap_();
  if (!keymap) return std::nullopt;
  Layouts layouts;
  for (xkb_layout_index_t group = 0; group < xkb_keymap_num_layouts(keymap.get()); ++group) {
    layouts.enabled.push_back(nameOf(*keymap, group));
  }
  layouts.active = activeLayout();
  if (!layouts.active && layouts.enabled.size() == 1) layouts.active = 0;
  return layouts;
}

void KeymapInputSources::selectLayout(const std::vector<XkbLayoutName>& /*enabled*/, std::size_t /*place*/) {}

KeyLayoutDataRef KeymapInputSources::dataOf(const XkbInputSource& source) {
  auto keymap = keymap_();
  if (!keymap || source.group >= xkb_keymap_num_layouts(keymap.get())) return nullptr;
  return keyLayoutData(std::move(keymap), source.group);
}

std::string KeymapInputSources::typedInFirst(std::size_t count) {
  const auto keymap = keymap_();
  return keymap ? typedIn(*keymap, count) : std::string();
}

}  // namespace lexwend::platform
