// SPDX-License-Identifier: MIT
#include "platform/linux/session/user_folders.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace lexwend::platform::user_folders {
namespace {

/// Settings are nobody else's business.
constexpr mode_t kPrivateFolder = 0700;
constexpr mode_t kPrivateFile = 0600;

std::string absoluteFromEnvironment(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr && value[0] == '/' ? value : "";
}

std::string folderOf(const std::string& path) {
  const auto slash = path.rfind('/');
  return slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
}

std::string linkTarget(const std::string& path) {
  std::array<char, PATH_MAX> resolved{};
  return ::realpath(path.c_str(), resolved.data()) != nullptr ? resolved.data() : path;
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

bool writeAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const auto written = ::write(descriptor, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

std::optional<std::string> readFile(const std::string& path) {
  const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
  if (descriptor < 0) return std::nullopt;
  std::string contents;
  std::array<char, 4096> chunk{};
  ssize_t got = 0;
  while ((got = ::read(descriptor, chunk.data(), chunk.size())) != 0) {
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) break;
    contents.append(chunk.data(), static_cast<std::size_t>(got));
  }
  ::close(descriptor);
  if (got < 0) return std::nullopt;
  return contents;
}

bool makeFolders(const std::string& path) {
  if (path.empty()) return false;
  for (auto end = path.find('/', 1);; end = path.find('/', end + 1)) {
    const auto part = path.substr(0, end);
    if (::mkdir(part.c_str(), kPrivateFolder) != 0 && errno != EEXIST) return false;
    if (end == std::string::npos) break;
  }
  struct stat state {};
  return ::stat(path.c_str(), &state) == 0 && S_ISDIR(state.st_mode);
}

bool replaceFile(const std::string& path, std::string_view bytes) {
  const auto target = linkTarget(path);
  const auto fresh = target + ".new";
  const int descriptor =
      ::open(fresh.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW | O_NOCTTY, kPrivateFile);
  if (descriptor < 0) return false;
  const bool flushed = writeAll(descriptor, bytes) && ::fsync(descriptor) == 0;
  const bool closed = ::close(descriptor) == 0;
  if (!flushed || !closed || std::rename(fresh.c_str(), target.c_str()) != 0) {
    ::unlink(fresh.c_str());
    return false;
  }
  // The new name itself is on the disk only once its folder is.
  const int folder = ::open(folderOf(target).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (folder >= 0) {
    ::fsync(folder);
    ::close(folder);
  }
  return true;
}

}  // namespace lexwend::platform::user_folders
