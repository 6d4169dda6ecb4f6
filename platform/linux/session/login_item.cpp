// SPDX-License-Identifier: MIT
#include "platform/linux/session/login_item.h"

#include <array>
#include <cerrno>
#include <climits>

#include <unistd.h>

#include "platform/linux/session/identity.h"
#include "platform/linux/session/user_folders.h"

namespace lexwend::platform {
namespace {

constexpr std::string_view kGroup = "[Desktop Entry]";

std::string_view trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(" \t\r");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

/// The value of a key in the entry's main group; empty when it is not there.
std::string_view entryValue(std::string_view text, std::string_view wanted) {
  bool inGroup = false;
  while (!text.empty()) {
    const auto lineEnd = text.find('\n');
    const auto line = trimmed(text.substr(0, lineEnd));
    text = lineEnd == std::string_view::npos ? std::string_view() : text.substr(lineEnd + 1);
    if (!line.empty() && line.front() == '[') {
      inGroup = line == kGroup;
    } else if (const auto equals = line.find('='); inGroup && equals != std::string_view::npos) {
      if (trimmed(line.substr(0, equals)) == wanted) return trimmed(line.substr(equals + 1));
    }
  }
  return {};
}

}  // namespace

std::string quotedForExec(std::string_view argument) {
  std::string result = "\"";
  for (const char c : argument) {
    // Quoting inside the argument, and then once more because the line is a string of the entry's own syntax.
    if (c == '"' || c == '`' || c == '$') {
      result += "\\\\";
    } else if (c == '\\') {
      result += "\\\\\\";
    } else if (c == '%') {
      result += '%';  // a single one would begin a field code
    }
    result += c;
  }
  return result + '"';
}

LinuxLoginItem::LinuxLoginItem(std::string entryPath, std::string program)
    : entryPath_(std::move(entryPath)), program_(std::move(program)) {}

std::string LinuxLoginItem::standardPath() {
  const auto folder = user_folders::configFolder();
  return folder.empty() ? "" : folder + "/autostart/" + std::string(kIdentifier) + ".desktop";
}

std::string programOfLink(std::string_view link) {
  constexpr std::string_view kReplaced = " (deleted)";
  std::string program(link);
  const bool marked =
      link.size() > kReplaced.size() && link.substr(link.size() - kReplaced.size()) == kReplaced;
  if (marked && ::access(program.c_str(), F_OK) != 0) program.resize(program.size() - kReplaced.size());
  return program;
}

std::string LinuxLoginItem::ownProgram() {
  std::array<char, PATH_MAX> path{};
  const auto length = ::readlink("/proc/self/exe", path.data(), path.size());
  return length <= 0 ? "" : programOfLink({path.data(), static_cast<std::size_t>(length)});
}

LoginItemStatus LinuxLoginItem::status() {
  const auto text = user_folders::readFile(entryPath_);
  const bool on = text && entryValue(*text, "Type") == "Application" &&
                  entryValue(*text, "Hidden") != "true" &&
                  entryValue(*text, "X-GNOME-Autostart-enabled") != "false";
  return on ? LoginItemStatus::enabled : LoginItemStatus::notRegistered;
}

bool LinuxLoginItem::registerItem() {
  if (entryPath_.empty() || program_.empty()) return false;
  std::string entry(kGroup);
  entry += "\nType=Application\nName=";
  entry += kDisplayName;
  entry += "\nExec=" + quotedForExec(program_) + "\nIcon=";
  entry += kIdentifier;
  entry += "\nTerminal=false\nX-GNOME-Autostart-enabled=true\n";
  const auto folder = entryPath_.substr(0, entryPath_.rfind('/'));
  return user_folders::makeFolders(folder) && user_folders::replaceFile(entryPath_, entry);
}

bool LinuxLoginItem::unregisterItem() {
  if (entryPath_.empty()) return true;
  return ::unlink(entryPath_.c_str()) == 0 || errno == ENOENT || errno == ENOTDIR;
}

}  // namespace lexwend::platform
