// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include "tests/linux/testing/desktop_settings.h"
#include "tests/linux/testing/private_bus.h"

namespace lexwend::platform {

/// A test on the one private bus of its program, since a program keeps its connection to the session bus,
/// with settings in which nothing is bound.
struct OnSharedBus : ::testing::Test {
  DesktopSettings& settings = DesktopSettings::shared();
  OnSharedBus() {
    static const PrivateBus kBus;
    settings.setKeyBindings({});
  }
};

}  // namespace lexwend::platform
