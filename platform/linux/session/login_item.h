// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/login_item.h"

namespace lexwend::platform {

/// One argument of an Exec key's value, quoted as the Desktop Entry Specification asks for. The escapes of
/// the entry's own syntax are not in it.
std::string quotedForExec(std::string_view argument);

/// The program that the text of /proc/self/exe names, without the mark " (deleted)" that the system adds when
/// the file was replaced or removed while the program runs. After an upgrade the program to start is what now
/// has that path.
std::string programOfLink(std::string_view link);

/// The agent's entry in the autostart folder (Desktop Application Autostart Specification). An entry counts
/// as registered when a login would start its program. One with Hidden=true does not count, nor one that
/// GNOME's settings switched off, one whose program is gone, or one that is no regular file of at most
/// user_folders::kMaxSmallFile bytes.
class LinuxLoginItem : public LoginItem {
 public:
  /// The entry's absolute path (empty: there is no folder for it) and the program that it starts.
  LinuxLoginItem(std::string entryPath, std::string program);
  /// $XDG_CONFIG_HOME/autostart/org.lexwend.Lexwend.desktop.
  static std::string standardPath();
  /// The absolute path of this process's executable; empty when the system does not tell.
  static std::string ownProgram();

  /// The words of the command of an entry that is switched on; empty when it has none that can be read.
  /// Nothing for an entry that is switched off or not there.
  static std::optional<std::vector<std::string>> commandOf(const std::string& path);

  LoginItemStatus status() override;
  bool registerItem() override;
  /// True also when there was no entry.
  bool unregisterItem() override;
  /// Leaves an entry alone that is switched off, or whose command is more than the path of a program, since
  /// the user has written that one.
  void followProgram() override;

 private:
  std::string entryPath_;
  std::string program_;
};

}  // namespace lexwend::platform
