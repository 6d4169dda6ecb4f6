// SPDX-License-Identifier: MIT
#include "platform/linux/kwin/input_sources.h"

#include <utility>

namespace lexwend::platform {
namespace {

constexpr BusObject kLayouts = {"org.kde.keyboard", "/Layouts", "org.kde.KeyboardLayouts"};

}  // namespace

KWinInputSources::KWinInputSources(std::shared_ptr<KWin> kwin)
    : KeymapInputSources([kwin] { return kwin->keymap(); }), kwin_(std::move(kwin)) {
  observation_ = kwin_->observeKeymap([this] { reportChange(); });
}

std::optional<std::size_t> KWinInputSources::activeLayout() {
  const auto answer = kwin_->call(kLayouts, "getLayout", g_variant_new("()"), "(u)");
  if (!answer) return std::nullopt;
  guint32 active = 0;
  g_variant_get(answer.get(), "(u)", &active);
  return active;
}

void KWinInputSources::selectLayout(const std::vector<XkbLayoutName>& /*enabled*/, std::size_t place) {
  kwin_->call(kLayouts, "setLayout", g_variant_new("(u)", static_cast<guint32>(place)), "(b)");
}

}  // namespace lexwend::platform
