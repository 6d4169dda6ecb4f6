// SPDX-License-Identifier: MIT
#pragma once

#include <csignal>
#include <cstdint>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

namespace lexwend::test {

/// While this lives a test that runs as root runs as somebody who may not read and write everything, and who
/// owns the folder.
class OrdinaryUser {
 public:
  explicit OrdinaryUser(const std::string& folder) {
    constexpr uid_t kNobody = 65534;
    if (::geteuid() != 0) return;
    EXPECT_EQ(::chown(folder.c_str(), kNobody, kNobody), 0);
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
      EXPECT_EQ(::chown(entry.path().c_str(), kNobody, kNobody), 0);
    }
    EXPECT_EQ(::seteuid(kNobody), 0);
  }
  ~OrdinaryUser() { EXPECT_EQ(::seteuid(::getuid()), 0); }
  OrdinaryUser(const OrdinaryUser&) = delete;
  OrdinaryUser& operator=(const OrdinaryUser&) = delete;
};

/// While this lives no file that this process writes grows beyond a size: a write that would is an error.
class FullDisk {
 public:
  explicit FullDisk(std::uintmax_t size) {
    std::signal(SIGXFSZ, SIG_IGN);
    EXPECT_EQ(::getrlimit(RLIMIT_FSIZE, &before_), 0);
    rlimit limited = before_;
    limited.rlim_cur = static_cast<rlim_t>(size);
    EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &limited), 0);
  }
  ~FullDisk() {
    EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &before_), 0);
    std::signal(SIGXFSZ, SIG_DFL);
  }
  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;

 private:
  rlimit before_{};
};

}  // namespace lexwend::test
