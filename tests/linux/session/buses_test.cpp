// SPDX-License-Identifier: MIT
#include "platform/linux/session/buses.h"

#include <chrono>

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "platform/linux/session/session_notice.h"
#include "tests/linux/testing/temporary_folder.h"

namespace lexwend::platform {
namespace {

using Clock = std::chrono::steady_clock;

/// A process has one connection to a bus: each test looks from a process of its own.
struct Buses : ::testing::Test {
  test::TemporaryFolder folder;

  Buses() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

/// A bus that takes connections and never says a word.
void listenSilently(const std::string& path) {
  const int listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  ASSERT_EQ(::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(::listen(listener, 1), 0);
}

[[noreturn]] void lookAtSilentBuses(const std::string& path) {
  ::alarm(30);  // instead of waiting for ever
  listenSilently(path);
  ::setenv("DBUS_SESSION_BUS_ADDRESS", ("unix:path=" + path).c_str(), 1);
  ::setenv("DBUS_SYSTEM_BUS_ADDRESS", ("unix:path=" + path).c_str(), 1);
  const auto start = Clock::now();
  const bool none = sessionBus() == nullptr && systemBus() == nullptr;
  notifyUser("a sentence");
  const auto limit = 2 * std::chrono::milliseconds(kBusCallTimeout) + std::chrono::seconds(1);
  std::_Exit(none && Clock::now() - start < limit ? 0 : 1);
}

TEST_F(Buses, thatNeverAnswerAreNone) {
  EXPECT_EXIT(lookAtSilentBuses(folder.file("bus")), ::testing::ExitedWithCode(0), "");
}

[[noreturn]] void lookWithoutABus(const std::string& folder) {
  ::unsetenv("DBUS_SESSION_BUS_ADDRESS");
  ::setenv("XDG_RUNTIME_DIR", folder.c_str(), 1);
  std::_Exit(sessionBus() == nullptr ? 0 : 1);
}

TEST_F(Buses, areNoneWhereThereIsNone) {
  EXPECT_EXIT(lookWithoutABus(folder.path()), ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace lexwend::platform
