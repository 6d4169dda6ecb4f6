// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "platform/linux/keymap/xkb_input_sources.h"

struct xkb_keymap;

namespace lexwend::platform {

/// The layouts of the keymap that a compositor sends, a group each. Their names are the descriptions in it;
/// one that is not in the registry is its own identifier. No protocol of Wayland tells the one in use or
/// selects one: a service that derives from this one may know how. Main thread only.
class KeymapInputSources : public XkbInputSources {
 public:
  /// `keymap` gives the one as it is now, or null.
  explicit KeymapInputSources(std::function<std::shared_ptr<xkb_keymap>()> keymap);

 private:
  /// The place of the layout in use, where that is known.
  virtual std::optional<std::size_t> activeLayout() { return std::nullopt; }
  std::optional<Layouts> layouts() final;
  void selectLayout(const std::vector<XkbLayoutName>& enabled, std::size_t place) override;
  KeyLayoutDataRef dataOf(const XkbInputSource& source) final;
  std::string typedInFirst(std::size_t count) final;

  std::function<std::shared_ptr<xkb_keymap>()> keymap_;
};

}  // namespace lexwend::platform
