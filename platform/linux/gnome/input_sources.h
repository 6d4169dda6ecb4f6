// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <vector>

#include "platform/linux/gnome/shell.h"
#include "platform/linux/keymap/xkb_input_sources.h"

namespace lexwend::platform {

/// The layouts of GNOME Shell, by the extension. Input methods among its input sources are left out. Main
/// thread only. A call waits for GNOME Shell.
class GnomeInputSources : public XkbInputSources {
 public:
  explicit GnomeInputSources(std::shared_ptr<GnomeShell> shell);

 private:
  std::optional<Layouts> layouts() override;
  void selectLayout(const std::vector<XkbLayoutName>& enabled, std::size_t place) override;

  std::shared_ptr<GnomeShell> shell_;
  std::vector<std::uint32_t> places_;  // of the layouts among GNOME's input sources
  Registration observation_;
};

}  // namespace lexwend::platform
