// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "platform/linux/kwin/kwin.h"
#include "platform/linux/wayland/keymap_input_sources.h"

namespace lexwend::platform {

/// Of the layouts that KWin sends, it tells on the session bus which one is active (org.kde.keyboard), and
/// selects one there. With a single layout that object is not there.
class KWinInputSources : public KeymapInputSources {
 public:
  explicit KWinInputSources(std::shared_ptr<KWin> kwin);

 private:
  std::optional<std::size_t> activeLayout() override;
  void selectLayout(const std::vector<XkbLayoutName>& enabled, std::size_t place) override;

  std::shared_ptr<KWin> kwin_;
  Registration observation_;
};

}  // namespace lexwend::platform
