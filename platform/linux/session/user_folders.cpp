// SPDX-License-Identifier: MIT
#include "platform/linux/session/user_folders.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>

#include <fcntl.h>
#include <glib.h>
#include <glib/gstdio.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace lexwend::platform::user_folders {
namespace {

/// Settings are nobody else's business.
constexpr int kPrivateFolder = 0700;
constexpr int kPrivateFile = 0600;

std::string absoluteFromEnvironment(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr && value[0] == '/' ? value : "";
}

std::string linkTarget(const std::string& path) {
  std::array<char, PATH_MAX> resolved{};
  return ::realpath(path.c_str(), resolved.data()) != nullptr ? resolved.data() : path;
}

/// Nothing when there is more than kMaxSmallFile, which the size that a file claims need not tell.
std::optional<std::string> readToEnd(int descriptor) {
  std::string contents;
  std::array<char, 4096> chunk{};
  while (contents.size() <= kMaxSmallFile) {
    const auto got = ::read(descriptor, chunk.data(), chunk.size());
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return std::nullopt;
    if (got == 0) return contents;
    contents.append(chunk.data(), static_cast<std::size_t>(got));
  }
  return std::nullopt;
}

}  // namespace

std::string homeDirectory() {
  if (auto home = absoluteFromEnvironment("HOME"); !home.empty()) return home;
  constexpr std::size_t kRecordSize = 16384;  // what sysconf() suggests is a hint that may be missing
  std::array<char, kRecordSize> buffer{};
  passwd record{};
  passwd* found = nullptr;
  const bool known =
      ::getpwuid_r(::getuid(), &record, buffer.data(), buffer.size(), &found) == 0 && found != nullptr;
  return known && found->pw_dir != nullptr && found->pw_dir[0] == '/' ? found->pw_dir : "";
}

std::string configFolder() {
  if (auto folder = absoluteFromEnvironment("XDG_CONFIG_HOME"); !folder.empty()) return folder;
  const auto home = homeDirectory();
  return home.empty() ? "" : home + "/.config";
}

std::string runtimeFolder() {
  return absoluteFromEnvironment("XDG_RUNTIME_DIR");
}

std::optional<std::string> readSmallFile(const std::string& path) {
  const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
  if (descriptor < 0) return std::nullopt;
  std::optional<std::string> contents;
  struct stat state {};
  if (::fstat(descriptor, &state) == 0 && S_ISREG(state.st_mode)) contents = readToEnd(descriptor);
  ::close(descriptor);
  return contents;
}

bool replaceFile(const std::string& path, std::string_view bytes) {
  const auto target = linkTarget(path);
  char* const folder = g_path_get_dirname(target.c_str());
  const bool hasFolder = g_mkdir_with_parents(folder, kPrivateFolder) == 0;
  g_free(folder);
  constexpr auto kFlags =
      static_cast<GFileSetContentsFlags>(G_FILE_SET_CONTENTS_CONSISTENT | G_FILE_SET_CONTENTS_DURABLE);
  return hasFolder &&
         g_file_set_contents_full(target.c_str(), bytes.data(), static_cast<gssize>(bytes.size()), kFlags,
                                  kPrivateFile, nullptr) != FALSE;
}

}  // namespace lexwend::platform::user_folders
