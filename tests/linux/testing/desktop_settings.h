// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <string>
#include <vector>

#include <gio/gio.h>

#include "platform/linux/session/glib_ref.h"

namespace lexwend::platform {

/// The settings of GNOME on layouts, their shortcuts and keys that run a command, in the memory of this
/// process. One for all tests of a program, because GLib reads the names of settings once. Must be asked for
/// before any setting is read.
class DesktopSettings {
 public:
  static DesktopSettings& shared();

  /// Of org.gnome.desktop.input-sources, "sources" or "mru-sources": layouts ("us", "us+dvorak").
  void setLayouts(const char* key, const std::vector<std::string>& layouts);
  std::vector<std::string> layouts(const char* key);
  /// Of org.gnome.desktop.wm.keybindings.
  void setShortcuts(const char* key, const std::vector<std::string>& accelerators);

  struct KeyBinding {
    std::string name;
    std::string command;
    std::string key;
    bool operator==(const KeyBinding&) const = default;
  };
  /// The keys that run a command, by the path of each; they take the place of all others.
  void setKeyBindings(const std::map<std::string, KeyBinding>& bindings);
  std::map<std::string, KeyBinding> keyBindings();
  /// What is set at that path, whether it is among keyBindings() or not.
  KeyBinding keyBindingAt(const std::string& path);

 private:
  DesktopSettings();
  GObjectRef<GSettings> sources_;
  GObjectRef<GSettings> bindings_;
  GObjectRef<GSettings> keys_;
};

}  // namespace lexwend::platform
