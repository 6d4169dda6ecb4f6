// SPDX-License-Identifier: MIT
#include "platform/linux/instance/running_applications.h"

#include <string>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/linux/session/user_folders.h"

namespace lexwend::platform {
namespace {

constexpr mode_t kPrivateFolder = 0700;
constexpr mode_t kPrivateFile = 0600;

/// True when the folder is this user's and nobody else may put anything into it.
bool isPrivate(const std::string& folder) {
  struct stat state {};
  return ::lstat(folder.c_str(), &state) == 0 && S_ISDIR(state.st_mode) && state.st_uid == ::getuid() &&
         (state.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

}  // namespace

LinuxRunningApplications::LinuxRunningApplications(std::string sharedFolder)
    : sharedFolder_(std::move(sharedFolder)) {}

std::vector<ProcessIdentifier> LinuxRunningApplications::withBundleIdentifier(std::string_view identifier) {
  return {holdLock(std::string(identifier)).value_or(ownProcessIdentifier())};
}

std::string LinuxRunningApplications::lockFolder() const {
  if (auto folder = user_folders::runtimeFolder(); !folder.empty() && isPrivate(folder)) return folder;
  auto folder = sharedFolder_ + "/lexwend-" + std::to_string(::getuid());
  ::mkdir(folder.c_str(), kPrivateFolder);  // it may be there, and what is there may be somebody else's
  return isPrivate(folder) ? folder : "";
}

ProcessIdentifier LinuxRunningApplications::ownProcessIdentifier() {
  return ::getpid();
}

std::optional<ProcessIdentifier> LinuxRunningApplications::holdLock(const std::string& identifier) {
  if (locks_.count(identifier) != 0) return ownProcessIdentifier();
  const auto folder = lockFolder();
  if (folder.empty() || identifier.find('/') != std::string::npos) return std::nullopt;
  const auto path = folder + "/" + identifier + ".lock";
  const int descriptor =
      ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, kPrivateFile);
  if (descriptor < 0) return std::nullopt;
  struct flock lock {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  if (::fcntl(descriptor, F_SETLK, &lock) == 0) {
    locks_.emplace(identifier, descriptor);  // closing the file would give the lock up
    return ownProcessIdentifier();
  }
  ::close(descriptor);
  return holderOfLock(identifier);
}

std::optional<ProcessIdentifier> LinuxRunningApplications::holderOfLock(std::string_view identifier) const {
  // To close the file would let this process's own lock go (fcntl(2)).
  if (holdsLock(identifier)) return std::nullopt;
  const auto folder = lockFolder();
  if (folder.empty()) return std::nullopt;
  const auto path = folder + "/" + std::string(identifier) + ".lock";
  const int descriptor = ::open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
  if (descriptor < 0) return std::nullopt;
  struct flock lock {};
  lock.l_type = F_WRLCK;
  const bool told = ::fcntl(descriptor, F_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
  ::close(descriptor);
  if (!told) return std::nullopt;
  return lock.l_pid;
}

}  // namespace lexwend::platform
