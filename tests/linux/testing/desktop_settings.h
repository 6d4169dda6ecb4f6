// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include <gio/gio.h>

#include "platform/linux/session/glib_ref.h"

namespace lexwend::platform {

/// The settings of GNOME on layouts and their shortcuts, in the memory of this process. One for all tests of
/// a program, because GLib reads the names of settings once. Must be asked for before any setting is read.
class DesktopSettings {
 public:
  static DesktopSettings& shared();

  /// Of org.gnome.desktop.input-sources, "sources" or "mru-sources": layouts ("us", "us+dvorak").
  void setLayouts(const char* key, const std::vector<std::string>& layouts);
  std::vector<std::string> layouts(const char* key);
  /// Of org.gnome.desktop.wm.keybindings.
  void setShortcuts(const char* key, const std::vector<std::string>& accelerators);

 private:
  DesktopSettings();
  GObjectRef<GSettings> sources_;
  GObjectRef<GSettings> bindings_;
};

}  // namespace lexwend::platform
