// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

#include <gtest/gtest.h>

#include "tests/contract/host_under_test.h"

namespace lexwend::contract {

using namespace std::chrono_literals;

/// Modifiers that no desktop uses together with the function keys of these tests.
inline constexpr platform::Modifiers kRareModifiers = platform::kControlKey | platform::kShiftKey;

class ContractTest : public testing::Test {
 protected:
  platform::Host& host() { return underTest->host(); }

  std::unique_ptr<HostUnderTest> underTest = makeHostUnderTest();
};

}  // namespace lexwend::contract
