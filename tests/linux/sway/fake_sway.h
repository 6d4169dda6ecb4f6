// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tests/linux/testing/temporary_folder.h"

namespace lexwend::platform {

/// The sockets of sway with answers that the test writes, on a thread of its own; from construction to
/// destruction it is the one of SWAYSOCK.
class FakeSway {
 public:
  FakeSway();
  ~FakeSway();
  FakeSway(const FakeSway&) = delete;
  FakeSway& operator=(const FakeSway&) = delete;

  /// From now on a question of that type gets this answer. The usual one is a success.
  void answer(std::uint32_t type, std::string payload);
  /// From now on nothing is answered.
  void fallSilent();
  void speakAgain();
  /// Tells those who have subscribed.
  void tell(std::uint32_t type, const std::string& payload);
  /// The payloads of the commands so far.
  std::vector<std::string> commands();
  /// The payloads of the ticks so far.
  std::vector<std::string> ticks();

 private:
  void run();
  void handle(int client);

  test::TemporaryFolder folder_;
  test::EnvironmentVariable variable_{"SWAYSOCK", folder_.file("sway").c_str()};
  int listener_;
  int stop_[2];
  std::mutex mutex_;
  std::map<std::uint32_t, std::string> answers_;
  std::vector<std::string> commands_;
  std::vector<std::string> ticks_;
  std::vector<int> clients_;
  std::vector<int> subscribers_;
  bool isSilent_ = false;
  std::thread thread_;
};

}  // namespace lexwend::platform
