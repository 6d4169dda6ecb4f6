// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/keymap/xkb_input_sources.h"
#include "platform/linux/kwin/kwin.h"

namespace lexwend::platform {

/// The groups of the keymap that KWin sends. Their names are the descriptions in it; one that is not in the
/// registry is its own identifier. Which one is active KWin tells on the session bus (org.kde.keyboard),
/// where it selects one as well. With a single layout that object is not there.
class KWinInputSources : public XkbInputSources {
 public:
  explicit KWinInputSources(std::shared_ptr<KWin> kwin);

 private:
  std::optional<Layouts> layouts() override;
  void selectLayout(const std::vector<XkbLayoutName>& enabled, std::size_t place) override;
  KeyLayoutDataRef dataOf(const XkbInputSource& source) override;
  std::string typedInFirst(std::size_t count) override;

  std::shared_ptr<KWin> kwin_;
  Registration observation_;
};

}  // namespace lexwend::platform
