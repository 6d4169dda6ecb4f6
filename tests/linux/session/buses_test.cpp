// SPDX-License-Identifier: MIT
#include "platform/linux/session/buses.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <functional>

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
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

/// A message bus of its own at that path, until the process ends or it is killed.
class BusAt {
 public:
  explicit BusAt(const std::string& path) {
    std::string program = "dbus-daemon";
    std::string options[] = {"--session", "--nofork", "--print-address=1", "--address=unix:path=" + path};
    char* arguments[] = {program.data(),    options[0].data(), options[1].data(),
                         options[2].data(), options[3].data(), nullptr};
    int output = -1;
    if (g_spawn_async_with_pipes(nullptr, arguments, nullptr,
                                 static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_DO_NOT_REAP_CHILD),
                                 nullptr, nullptr, &process_, nullptr, &output, nullptr, nullptr) == FALSE) {
      std::_Exit(2);
    }
    for (char byte = 0; ::read(output, &byte, 1) == 1 && byte != '\n';) continue;
    ::close(output);
  }
  ~BusAt() {
    signal(SIGKILL);
    ::waitpid(process_, nullptr, 0);
  }
  BusAt(const BusAt&) = delete;
  BusAt& operator=(const BusAt&) = delete;

  void signal(int number) const { ::kill(process_, number); }

 private:
  GPid process_ = 0;
};

/// Runs the main context until the condition holds; ends the process in failure when it never does.
void waitFor(const std::function<bool()>& condition, int failure) {
  const guint wake = g_timeout_add(
      10, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
  const auto limit = Clock::now() + std::chrono::seconds(20);
  while (!condition()) {
    if (Clock::now() > limit) std::_Exit(failure);
    g_main_context_iteration(nullptr, TRUE);
  }
  g_source_remove(wake);
}

[[noreturn]] void loseABusThatCameLate(const std::string& path) {
  ::alarm(60);
  ::setenv("DBUS_SESSION_BUS_ADDRESS", ("unix:path=" + path).c_str(), 1);
  GDBusConnection* told = nullptr;
  BusObservation observation;
  {
    const BusAt bus(path);
    bus.signal(SIGSTOP);
    const auto start = Clock::now();
    if (sessionBus() != nullptr) std::_Exit(3);
    observation = observeSessionBus([&](GDBusConnection* connection) { told = connection; });
    if (told != nullptr || Clock::now() - start > std::chrono::seconds(5)) std::_Exit(4);
    bus.signal(SIGCONT);
    waitFor([&] { return told != nullptr; }, 5);
    if (told != sessionBus()) std::_Exit(6);
  }
  waitFor([&] { return told == nullptr; }, 7);
  if (sessionBus() != nullptr) std::_Exit(8);
  std::remove(path.c_str());
  const BusAt next(path);
  waitFor([&] { return told != nullptr; }, 9);
  if (g_dbus_connection_is_closed(told) != FALSE || told != sessionBus()) std::_Exit(10);
  told = nullptr;
  observation.reset();
  next.signal(SIGKILL);
  waitFor([] { return sessionBus() == nullptr; }, 11);
  std::_Exit(0);
}

TEST_F(Buses, areThereOnceTheyAnswerAndAgainWhenTheyComeBack) {
  EXPECT_EXIT(loseABusThatCameLate(folder.file("bus")), ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace lexwend::platform
