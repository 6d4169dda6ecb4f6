// SPDX-License-Identifier: MIT
#include "platform/linux/instance/running_applications.h"

#include <array>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/linux/testing/temporary_folder.h"

namespace lexwend::platform {
namespace {

using Processes = std::vector<ProcessIdentifier>;

struct UsersSession : ::testing::Test {
  test::TemporaryFolder folder;
  test::EnvironmentVariable runtime{"XDG_RUNTIME_DIR", folder.path().c_str()};
};

/// Another process that makes itself known and then lives until this goes.
class OtherInstance {
 public:
  explicit OtherInstance(const std::string& identifier, const std::string& sharedFolder = "/nonexistent") {
    std::array<int, 2> known{};
    std::array<int, 2> end{};
    if (::pipe(known.data()) != 0 || ::pipe(end.data()) != 0) throw std::runtime_error("no pipe");
    process_ = ::fork();
    if (process_ == 0) {
      ::close(end[1]);
      LinuxRunningApplications applications(sharedFolder);
      const char byte = applications.withBundleIdentifier(identifier) == Processes{::getpid()} ? 'y' : 'n';
      char ended = 0;
      const bool told = ::write(known[1], &byte, 1) == 1;
      ::_exit(told && ::read(end[0], &ended, 1) == 0 ? 0 : 1);
    }
    ::close(known[1]);
    ::close(end[0]);
    end_ = end[1];
    char byte = 'n';
    alone_ = ::read(known[0], &byte, 1) == 1 && byte == 'y';
    ::close(known[0]);
  }
  ~OtherInstance() { stop(); }
  OtherInstance(const OtherInstance&) = delete;
  OtherInstance& operator=(const OtherInstance&) = delete;

  void stop() {
    if (process_ <= 0) return;
    ::close(end_);
    ::waitpid(process_, nullptr, 0);
    process_ = 0;
  }
  bool thoughtItselfAlone() const { return alone_; }
  ProcessIdentifier process() const { return process_; }

 private:
  pid_t process_ = 0;
  int end_ = -1;
  bool alone_ = false;
};

TEST_F(UsersSession, knowsThisProcessAlone) {
  LinuxRunningApplications applications;
  EXPECT_EQ(applications.ownProcessIdentifier(), ::getpid());
  EXPECT_EQ(applications.withBundleIdentifier("org.lexwend.Test"), Processes{::getpid()});
  EXPECT_EQ(applications.withBundleIdentifier("org.lexwend.Test"), Processes{::getpid()});
}

TEST_F(UsersSession, knowsAnotherInstanceUntilThatEnds) {
  LinuxRunningApplications applications;
  OtherInstance other("org.lexwend.Test");
  EXPECT_TRUE(other.thoughtItselfAlone());
  EXPECT_EQ(applications.withBundleIdentifier("org.lexwend.Test"), Processes{other.process()});
  EXPECT_EQ(applications.withBundleIdentifier("org.lexwend.Else"), Processes{::getpid()});
  other.stop();
  EXPECT_EQ(applications.withBundleIdentifier("org.lexwend.Test"), Processes{::getpid()});
}

TEST_F(UsersSession, keepsItsOwnLockWhenItAsksWhoElseHoldsIt) {
  LinuxRunningApplications applications;
  applications.withBundleIdentifier("org.lexwend.Test");
  EXPECT_EQ(applications.holderOfLock("org.lexwend.Test"), std::nullopt);
  EXPECT_FALSE(OtherInstance("org.lexwend.Test").thoughtItselfAlone());
}

TEST_F(UsersSession, tellsOfAnotherInstanceWithoutBecomingOne) {
  const LinuxRunningApplications asking;
  EXPECT_EQ(asking.holderOfLock("org.lexwend.Test"), std::nullopt);
  OtherInstance other("org.lexwend.Test");
  EXPECT_TRUE(other.thoughtItselfAlone());
  EXPECT_EQ(asking.holderOfLock("org.lexwend.Test"), other.process());
}

/// Where the session has no folder of its own, one is made in a folder that all users share.
struct SessionWithoutAFolder : ::testing::Test {
  test::TemporaryFolder shared;
  test::EnvironmentVariable runtime{"XDG_RUNTIME_DIR", nullptr};
  const std::string own = shared.file("lexwend-" + std::to_string(::getuid()));
  LinuxRunningApplications applications{shared.path()};
};

TEST_F(SessionWithoutAFolder, knowsAnotherInstanceAllTheSame) {
  OtherInstance other("org.lexwend.Test", shared.path());
  EXPECT_TRUE(other.thoughtItselfAlone());
  EXPECT_EQ(applications.withBundleIdentifier("org.lexwend.Test"), Processes{other.process()});
  EXPECT_EQ(std::filesystem::status(own).permissions(), std::filesystem::perms::owner_all);
}

TEST_F(SessionWithoutAFolder, isServedWhenTheOneThatItNamesIsOpenToOthers) {
  const auto open = shared.file("open");
  std::filesystem::create_directory(open);
  ASSERT_EQ(::chmod(open.c_str(), 0777), 0);
  const test::EnvironmentVariable named("XDG_RUNTIME_DIR", open.c_str());
  EXPECT_EQ(applications.withBundleIdentifier("org.lexwend.Test"), Processes{::getpid()});
  EXPECT_TRUE(std::filesystem::is_empty(open));
  EXPECT_TRUE(std::filesystem::exists(own + "/org.lexwend.Test.lock"));
}

TEST_F(SessionWithoutAFolder, putsNothingWhereSomebodyElseMayReachIt) {
  std::filesystem::create_directory(own);
  ASSERT_EQ(::chmod(own.c_str(), 0777), 0);
  EXPECT_EQ(applications.withBundleIdentifier("org.lexwend.Test"), Processes{::getpid()});
  EXPECT_TRUE(std::filesystem::is_empty(own));
  std::filesystem::remove(own);
  std::filesystem::create_directory(shared.file("elsewhere"));
  std::filesystem::create_directory_symlink(shared.file("elsewhere"), own);
  EXPECT_EQ(applications.withBundleIdentifier("org.lexwend.Test"), Processes{::getpid()});
  EXPECT_TRUE(std::filesystem::is_empty(shared.file("elsewhere")));
}

}  // namespace
}  // namespace lexwend::platform
