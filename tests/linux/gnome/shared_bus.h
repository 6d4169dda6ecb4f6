// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include "tests/linux/testing/private_bus.h"

namespace lexwend::platform {

/// A test on the one private bus of its program, since a program keeps its connection to the session bus.
struct OnSharedBus : ::testing::Test {
  OnSharedBus() { static const PrivateBus kBus; }
};

}  // namespace lexwend::platform
