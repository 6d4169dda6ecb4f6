// SPDX-License-Identifier: MIT
#include "platform/linux/instance/running_instance.h"

#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/linux/testing/private_desktop.h"

namespace lexwend::platform {
namespace {

/// An agent in this process. Other processes are connections of their own, on threads of their own.
struct Instance : ::testing::Test {
  PrivateDesktop& desktop = PrivateDesktop::shared();
  bool menuIsOpen = false;
  bool takes = true;
  LinuxRunningInstance agent{[this] { return menuIsOpen; }};
  std::vector<InstanceCommand> got;
  Registration receiving;

  void receive() {
    receiving = agent.receive([this](InstanceCommand command) {
      got.push_back(command);
      return takes;
    });
  }
  /// The agent's answer, for which the main thread runs its loop.
  InstanceAnswer pass(InstanceCommand command) {
    std::atomic<bool> isOver = false;
    InstanceAnswer answer{};
    LinuxRunningInstance other;
    std::thread process([&] {
      answer = other.pass(command);
      isOver = true;
    });
    EXPECT_TRUE(pumpUntil([&] { return isOver.load(); }));
    process.join();
    return answer;
  }
  /// The name comes to the bus a moment after receive().
  void receiveAndWait() {
    receive();
    ASSERT_TRUE(pumpUntil([this] { return pass(InstanceCommand::menu) == InstanceAnswer::taken; }));
    got.clear();
  }
};

TEST_F(Instance, thatDoesNotRunIsNobody) {
  EXPECT_EQ(pass(InstanceCommand::fix), InstanceAnswer::nobodyRuns);
}

TEST_F(Instance, getsEachCommandOnce) {
  receiveAndWait();
  for (const auto command :
       {InstanceCommand::fix, InstanceCommand::menu, InstanceCommand::settings, InstanceCommand::quit}) {
    EXPECT_EQ(pass(command), InstanceAnswer::taken);
    EXPECT_EQ(got, std::vector{command});
    got.clear();
  }
}

TEST_F(Instance, saysThatItDropsACommand) {
  receiveAndWait();
  takes = false;
  EXPECT_EQ(pass(InstanceCommand::fix), InstanceAnswer::dropped);
  EXPECT_EQ(got.size(), 1U);
}

TEST_F(Instance, dropsAFixWhileItsMenuHasTheKeyboard) {
  receiveAndWait();
  menuIsOpen = true;
  EXPECT_EQ(pass(InstanceCommand::fix), InstanceAnswer::dropped);
  EXPECT_TRUE(got.empty());
  EXPECT_EQ(pass(InstanceCommand::quit), InstanceAnswer::taken);
}

TEST_F(Instance, dropsAFixThatArrivesWhileOneRunsAlthoughItIsReadLater) {
  receiveAndWait();
  InstanceAnswer answer{};
  {
    const Registration fix = agent.dropFixes();
    std::thread process([&] {
      LinuxRunningInstance other;
      answer = other.pass(InstanceCommand::fix);
    });
    process.join();  // the main thread is busy all the time
  }
  EXPECT_EQ(answer, InstanceAnswer::dropped);
  while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
  }
  EXPECT_TRUE(got.empty());
  EXPECT_EQ(pass(InstanceCommand::fix), InstanceAnswer::taken);
}

TEST_F(Instance, hasTheFourMethodsAndNoOther) {
  receiveAndWait();
  BusPeer peer;
  const auto call = [&](const char* method, GVariant* arguments) {
    return peer.call("org.lexwend.Lexwend", "/org/lexwend/Lexwend", "org.lexwend.Lexwend", method,
                     arguments) != nullptr;
  };
  for (const char* method : {"Fix", "Menu", "Settings", "Quit"}) EXPECT_TRUE(call(method, nullptr)) << method;
  EXPECT_EQ(got.size(), 4U);
  EXPECT_FALSE(call("Log", nullptr));
  EXPECT_FALSE(call("Fix", g_variant_new("(s)", "akuo")));
  EXPECT_EQ(got.size(), 4U);
}

TEST_F(Instance, isGoneWithItsObject) {
  {
    LinuxRunningInstance shortLived;
    const auto registration = shortLived.receive([](InstanceCommand) { return true; });
    ASSERT_TRUE(pumpUntil([this] { return pass(InstanceCommand::menu) == InstanceAnswer::taken; }));
  }
  EXPECT_TRUE(pumpUntil([this] { return pass(InstanceCommand::menu) == InstanceAnswer::nobodyRuns; }));
}

}  // namespace
}  // namespace lexwend::platform
