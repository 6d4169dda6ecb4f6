// SPDX-License-Identifier: MIT
#include "platform/linux/session/running_applications.h"

#include <array>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/linux/testing/temporary_folder.h"

namespace lexwend::platform {
namespace {

using Processes = std::vector<ProcessIdentifier>;

/// No session bus: the lock file decides.
struct SessionWithoutABus : ::testing::Test {
  test::TemporaryFolder folder;
  test::EnvironmentVariable runtime{"XDG_RUNTIME_DIR", folder.path().c_str()};
  test::EnvironmentVariable bus{"DBUS_SESSION_BUS_ADDRESS", nullptr};
};

/// Another process that makes itself known and then lives until this goes.
class OtherInstance {
 public:
  explicit OtherInstance(const std::string& identifier) {
    std::array<int, 2> known{};
    std::array<int, 2> end{};
    if (::pipe(known.data()) != 0 || ::pipe(end.data()) != 0) throw std::runtime_error("no pipe");
    process_ = ::fork();
    if (process_ == 0) {
      ::close(end[1]);
      LinuxRunningApplications applications;
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

TEST_F(SessionWithoutABus, knowsThisProcessAlone) {
  LinuxRunningApplications applications;
  EXPECT_EQ(applications.ownProcessIdentifier(), ::getpid());
  EXPECT_EQ(applications.withBundleIdentifier("org.lexwend.Test"), Processes{::getpid()});
  EXPECT_EQ(applications.withBundleIdentifier("org.lexwend.Test"), Processes{::getpid()});
}

TEST_F(SessionWithoutABus, knowsAnotherInstanceUntilThatEnds) {
  LinuxRunningApplications applications;
  OtherInstance other("org.lexwend.Test");
  EXPECT_TRUE(other.thoughtItselfAlone());
  EXPECT_EQ(applications.withBundleIdentifier("org.lexwend.Test"), Processes{other.process()});
  EXPECT_EQ(applications.withBundleIdentifier("org.lexwend.Else"), Processes{::getpid()});
  other.stop();
  EXPECT_EQ(applications.withBundleIdentifier("org.lexwend.Test"), Processes{::getpid()});
}

TEST(SessionWithoutABusAndAFolder, knowsThisProcessAlone) {
  const test::EnvironmentVariable runtime("XDG_RUNTIME_DIR", nullptr);
  const test::EnvironmentVariable bus("DBUS_SESSION_BUS_ADDRESS", nullptr);
  LinuxRunningApplications applications;
  EXPECT_EQ(applications.withBundleIdentifier("org.lexwend.Test"), Processes{::getpid()});
}

}  // namespace
}  // namespace lexwend::platform
