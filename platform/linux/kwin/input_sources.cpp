// SPDX-License-Identifier: MIT
#include "platform/linux/kwin/input_sources.h"

#include <utility>

#include <xkbcommon/xkbcommon.h>

namespace lexwend::platform {
namespace {

constexpr BusObject kLayouts = {"org.kde.keyboard", "/Layouts", "org.kde.KeyboardLayouts"};

XkbLayoutName nameOf(xkb_keymap& keymap, xkb_layout_index_t group) {
  const char* description = xkb_keymap_layout_get_name(&keymap, group);
  if (description == nullptr) return {};
  return layoutDescribedAs(description).value_or(XkbLayoutName{description, ""});
}

}  // namespace

KWinInputSources::KWinInputSources(std::shared_ptr<KWin> kwin) : kwin_(std::move(kwin)) {
  observation_ = kwin_->observeKeymap([this] { reportChange(); });
}

std::optional<XkbInputSources::Layouts> KWinInputSources::layouts() {
  const auto keymap = kwin_->keymap();
  if (!keymap) return std::nullopt;
  Layouts layouts;
  for (xkb_layout_index_t group = 0; group < xkb_keymap_num_layouts(keymap.get()); ++group) {
    layouts.enabled.push_back(nameOf(*keymap, group));
  }
  if (layouts.enabled.size() == 1) layouts.active = 0;
  if (const auto answer = kwin_->call(kLayouts, "getLayout", g_variant_new("()"), "(u)")) {
    guint32 active = 0;
    g_variant_get(answer.get(), "(u)", &active);
    layouts.active = active;
  }
  return layouts;
}

void KWinInputSources::selectLayout(const std::vector<XkbLayoutName>& /*enabled*/, std::size_t place) {
  kwin_->call(kLayouts, "setLayout", g_variant_new("(u)", static_cast<guint32>(place)), "(b)");
}

KeyLayoutDataRef KWinInputSources::dataOf(const XkbInputSource& source) {
  auto keymap = kwin_->keymap();
  if (!keymap || source.group >= xkb_keymap_num_layouts(keymap.get())) return nullptr;
  return keyLayoutData(std::move(keymap), source.group);
}

std::string KWinInputSources::typedInFirst(std::size_t count) {
  const auto keymap = kwin_->keymap();
  return keymap ? typedIn(*keymap, count) : std::string();
}

}  // namespace lexwend::platform
