// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>

#include <gio/gio.h>

#include "platform/linux/session/glib_ref.h"

namespace lexwend::platform {

/// GNOME's own key bindings that run a command (org.gnome.settings-daemon.plugins.media-keys): a setting of
/// the user's, which the keyboard settings list. Main thread only.
class GnomeKeyBinding {
 public:
  /// Binds keys to that program with the option --fix.
  explicit GnomeKeyBinding(std::string program) : program_(std::move(program)) {}

  /// Whether the settings are there, and the daemon that acts on them.
  bool isPossible() const;
  /// Whether the user has bound a key to `lexwend --fix`, whichever key and by whichever path.
  bool isMadeByUser() const;
  /// Whether set() was called last, by whichever process.
  bool isSet() const;
  /// Binds the key ("<Control>k"); takes the place of the one before.
  void set(const std::string& accelerator);
  /// Takes the binding away; those of the user's stay.
  void remove();

 private:
  std::string program_;
};

}  // namespace lexwend::platform
