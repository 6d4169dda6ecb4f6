// SPDX-License-Identifier: MIT
#include "platform/linux/session/login_item.h"

#include <array>
#include <cerrno>
#include <climits>
#include <optional>
#include <vector>

#include <unistd.h>

#include "platform/linux/session/glib_ref.h"
#include "platform/linux/session/identity.h"
#include "platform/linux/session/user_folders.h"

namespace lexwend::platform {
namespace {

constexpr const char* kGnomeSwitch = "X-GNOME-Autostart-enabled";
constexpr const char* kGroup = G_KEY_FILE_DESKTOP_GROUP;

bool has(GKeyFile* entry, const char* key, std::string_view value) {
  const GText text(g_key_file_get_value(entry, kGroup, key, nullptr));
  return text != nullptr && value == g_strstrip(text.get());
}

/// "%%" stands for a percent sign.
std::string withoutFieldCodes(std::string_view word) {
  std::string result;
  for (std::size_t i = 0; i < word.size(); ++i) {
    result += word[i];
    if (word[i] == '%' && i + 1 < word.size() && word[i + 1] == '%') ++i;
  }
  return result;
}

void set(GKeyFile* entry, const char* key, const std::string& value) {
  g_key_file_set_string(entry, kGroup, key, value.c_str());
}

/// Whether a command's first word names a program that can be started, by its path or in the PATH.
bool isProgram(const std::string& name) {
  const GText found(g_find_program_in_path(name.c_str()));
  return found != nullptr;
}

}  // namespace

std::string quotedForExec(std::string_view argument) {
  std::string result = "\"";
  for (const char c : argument) {
    if (c == '"' || c == '`' || c == '$' || c == '\\') result += '\\';
    if (c == '%') result += '%';  // a single one would begin a field code
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

std::optional<std::vector<std::string>> LinuxLoginItem::commandOf(const std::string& path) {
  const auto text = user_folders::readSmallFile(path);
  const GKeyFileRef entry(g_key_file_new());
  const bool on =
      text &&
      g_key_file_load_from_data(entry.get(), text->data(), text->size(), G_KEY_FILE_NONE, nullptr) != FALSE &&
      has(entry.get(), G_KEY_FILE_DESKTOP_KEY_TYPE, G_KEY_FILE_DESKTOP_TYPE_APPLICATION) &&
      !has(entry.get(), G_KEY_FILE_DESKTOP_KEY_HIDDEN, "true") && !has(entry.get(), kGnomeSwitch, "false");
  if (!on) return std::nullopt;
  std::vector<std::string> words;
  const GText command(g_key_file_get_string(entry.get(), kGroup, G_KEY_FILE_DESKTOP_KEY_EXEC, nullptr));
  gint count = 0;
  gchar** parsed = nullptr;
  const bool isRead =
      command != nullptr && g_shell_parse_argv(command.get(), &count, &parsed, nullptr) != FALSE;
  if (!isRead) return words;
  for (gint i = 0; i < count; ++i) words.push_back(withoutFieldCodes(parsed[i]));
  g_strfreev(parsed);
  return words;
}

LoginItemStatus LinuxLoginItem::status() {
  const auto command = commandOf(entryPath_);
  const bool starts = command && !command->empty() && isProgram(command->front());
  return starts ? LoginItemStatus::enabled : LoginItemStatus::notRegistered;
}

void LinuxLoginItem::followProgram() {
  const auto command = commandOf(entryPath_);
  if (!command || command->size() != 1 || command->front() == program_) return;
  static_cast<void>(registerItem());
}

bool LinuxLoginItem::registerItem() {
  if (entryPath_.empty() || program_.empty()) return false;
  const GKeyFileRef entry(g_key_file_new());
  set(entry.get(), G_KEY_FILE_DESKTOP_KEY_TYPE, G_KEY_FILE_DESKTOP_TYPE_APPLICATION);
  set(entry.get(), G_KEY_FILE_DESKTOP_KEY_NAME, std::string(kDisplayName));
  set(entry.get(), G_KEY_FILE_DESKTOP_KEY_EXEC, quotedForExec(program_));
  set(entry.get(), G_KEY_FILE_DESKTOP_KEY_ICON, std::string(kIdentifier));
  set(entry.get(), G_KEY_FILE_DESKTOP_KEY_TERMINAL, "false");
  set(entry.get(), kGnomeSwitch, "true");
  gsize length = 0;
  const GText text(g_key_file_to_data(entry.get(), &length, nullptr));
  return user_folders::replaceFile(entryPath_, {text.get(), length});
}

bool LinuxLoginItem::unregisterItem() {
  if (entryPath_.empty()) return true;
  return ::unlink(entryPath_.c_str()) == 0 || errno == ENOENT || errno == ENOTDIR;
}

}  // namespace lexwend::platform
