// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

#include "platform/login_item.h"

namespace lexwend::platform {

/// One argument of an Exec line, quoted as the Desktop Entry Specification asks for.
std::string quotedForExec(std::string_view argument);

/// The program that the text of /proc/self/exe names. The system marks the path of one whose file was
/// replaced or removed while it runs; what stands there after an upgrade is the program to start.
std::string programOfLink(std::string_view link);

/// The agent's entry in the autostart folder (Desktop Application Autostart Specification). An entry that
/// says Hidden=true, or that GNOME's settings switched off, counts as not registered.
class LinuxLoginItem : public LoginItem {
 public:
  /// The entry's absolute path (empty: there is no folder for it) and the program that it starts.
  LinuxLoginItem(std::string entryPath, std::string program);
  /// $XDG_CONFIG_HOME/autostart/org.lexwend.Lexwend.desktop.
  static std::string standardPath();
  /// The absolute path of this process's executable; empty when the system does not tell.
  static std::string ownProgram();

  LoginItemStatus status() override;
  bool registerItem() override;
  /// True also when there was no entry.
  bool unregisterItem() override;

 private:
  std::string entryPath_;
  std::string program_;
};

}  // namespace lexwend::platform
