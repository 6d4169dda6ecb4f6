// SPDX-License-Identifier: MIT
#include "tools/system_layout_map.h"

#include <memory>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "platform/fake/fake_host.h"

namespace lexwend {
namespace {

std::vector<platform::FakeLayout> enabledLayouts;

}  // namespace

// The host of this program: a new one for each question, with the layouts of the running test.
std::unique_ptr<platform::Host> platform::makeHost() {
  auto host = std::make_unique<FakeHost>();
  host->inputSourceService().setLayouts(enabledLayouts);
  return host;
}

namespace {

TEST(SystemLayoutMap, isBuiltFromTheEnabledLayouts) {
  enabledLayouts = {platform::usLayout(), platform::hebrewLayout()};
  const auto map = systemLayoutMap();
  ASSERT_TRUE(map.has_value());
  EXPECT_TRUE(map->builtFromSystem);
  EXPECT_EQ(map->toHebrew.at("a"), "ש");
  EXPECT_EQ(map->toEnglish.at("ש"), "a");
}

TEST(SystemLayoutMap, isNoneWithoutAHebrewLayout) {
  enabledLayouts = {platform::usLayout()};
  EXPECT_EQ(systemLayoutMap(), std::nullopt);
}

TEST(SystemLayoutMap, isNoneWithoutAnyLayout) {
  enabledLayouts = {};
  EXPECT_EQ(systemLayoutMap(), std::nullopt);
}

}  // namespace
}  // namespace lexwend
