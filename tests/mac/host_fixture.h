// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/mac/mac_host.h"
#include "tests/mac/doubles/control.h"

namespace lexwend::platform::mac {

/// A fresh login with the macOS host in it. At the end of the test the host and everything that the test made
/// of it are gone, and every object of the system must have been given back.
struct OnMac : ::testing::Test {
  doubles::Session session;
  std::unique_ptr<Host> host = makeHost();

  /// The user interface exists only once the process is an application.
  void takeApplication() { host->application().takeSharedApplication(); }

  /// The arguments of the one call of that name into the system since the last forgetCalls().
  static std::string argumentsOf(const std::string& name) {
    const std::vector<doubles::Call> calls = doubles::callsNamed(name);
    EXPECT_EQ(calls.size(), 1u) << name;
    return calls.empty() ? std::string() : calls.front().arguments;
  }

  void TearDown() override {
    host = nullptr;
    EXPECT_EQ(session.unbalancedObjects(), "");
  }
};

/// The same, with the shared application made.
struct InMacApplication : OnMac {
  void SetUp() override { takeApplication(); }
};

}  // namespace lexwend::platform::mac
