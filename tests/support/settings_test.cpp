// SPDX-License-Identifier: MIT
#include "support/settings.h"

#include <limits>

#include <gtest/gtest.h>

#include "platform/fake/fake_host.h"

namespace lexwend {
namespace {

using platform::DefaultsValue;

struct SettingsTest : testing::Test {
  platform::FakeHost host;
  platform::HostScope scope{host};
  void put(std::string_view key, DefaultsValue value) {
    host.standardUserDefaults().put(key, std::move(value));
  }
};

using SettingsDeathTest = SettingsTest;

TEST_F(SettingsTest, emptyStoreGivesTheDefaults) {
  EXPECT_EQ(Settings::hotKeyCode(), platform::KeyCode{120});
  EXPECT_EQ(Settings::hotKeyModifiers(), platform::Modifiers{0});
  EXPECT_TRUE(Settings::switchLayoutAfter());
  EXPECT_FALSE(Settings::compatMode());
  EXPECT_TRUE(host.standardUserDefaults().all().empty()) << "reading stored something";
}

TEST_F(SettingsTest, keysAreSpelledLikeThis) {
  put("hotKeyCode", std::int64_t{96});
  put("hotKeyModifiers", std::int64_t{0x1A00});
  put("switchLayoutAfterFix", false);
  put("compatMode", true);
  EXPECT_EQ(Settings::hotKeyCode(), platform::KeyCode{96});
  EXPECT_EQ(Settings::hotKeyModifiers(), platform::Modifiers{0x1A00});
  EXPECT_FALSE(Settings::switchLayoutAfter());
  EXPECT_TRUE(Settings::compatMode());
  EXPECT_EQ(Settings::kDidRegisterLoginItemKey, "didRegisterLoginItem");
}

TEST_F(SettingsTest, textUnderABooleanKeyReadsAsItsDefault) {
  put("switchLayoutAfterFix", std::string("false"));
  put("compatMode", std::string("true"));
  EXPECT_TRUE(Settings::switchLayoutAfter());
  EXPECT_FALSE(Settings::compatMode());
}

TEST_F(SettingsTest, numberOrOtherObjectUnderABooleanKeyReadsAsItsDefault) {
  for (const DefaultsValue& value : {DefaultsValue(std::int64_t{0}), DefaultsValue(std::int64_t{1}),
                                     DefaultsValue(0.0), DefaultsValue(platform::OtherDefaultsValue{})}) {
    put("switchLayoutAfterFix", value);
    put("compatMode", value);
    EXPECT_TRUE(Settings::switchLayoutAfter());
    EXPECT_FALSE(Settings::compatMode());
  }
}

TEST_F(SettingsTest, textUnderANumberKeyReadsAsItsDefault) {
  put("hotKeyCode", std::string("96"));
  put("hotKeyModifiers", std::string("256"));
  EXPECT_EQ(Settings::hotKeyCode(), platform::KeyCode{120});
  EXPECT_EQ(Settings::hotKeyModifiers(), platform::Modifiers{0});
}

TEST_F(SettingsTest, onlyWholeNumbersCountAsNumbers) {
  put("hotKeyCode", 96.0);
  EXPECT_EQ(Settings::hotKeyCode(), platform::KeyCode{96});
  for (const DefaultsValue& value :
       {DefaultsValue(96.5), DefaultsValue(1e300), DefaultsValue(-1e300),
        DefaultsValue(9223372036854775808.0), DefaultsValue(std::numeric_limits<double>::quiet_NaN()),
        DefaultsValue(std::numeric_limits<double>::infinity()), DefaultsValue(true),
        DefaultsValue(platform::OtherDefaultsValue{})}) {
    put("hotKeyCode", value);
    EXPECT_EQ(Settings::hotKeyCode(), platform::KeyCode{120});
  }
}

TEST_F(SettingsTest, wholeRangeOfThirtyTwoBitsIsTaken) {
  put("hotKeyCode", std::int64_t{0});
  put("hotKeyModifiers", std::int64_t{4294967295});
  EXPECT_EQ(Settings::hotKeyCode(), platform::KeyCode{0});
  EXPECT_EQ(Settings::hotKeyModifiers(), platform::Modifiers{4294967295});
}

TEST_F(SettingsDeathTest, numberOutOfRangeStopsTheProcess) {
  for (const std::int64_t value :
       {std::int64_t{-1}, std::int64_t{4294967296}, std::numeric_limits<std::int64_t>::min(),
        std::numeric_limits<std::int64_t>::max()}) {
    put("hotKeyCode", value);
    put("hotKeyModifiers", value);
    EXPECT_DEATH(Settings::hotKeyCode(), "fatal: a stored hot-key number does not fit");
    EXPECT_DEATH(Settings::hotKeyModifiers(), "fatal: a stored hot-key number does not fit");
  }
  put("hotKeyCode", -1.0);
  EXPECT_DEATH(Settings::hotKeyCode(), "fatal: a stored hot-key number does not fit");
}

TEST_F(SettingsTest, everyCallReadsAfresh) {
  EXPECT_FALSE(Settings::compatMode());
  put("compatMode", true);
  EXPECT_TRUE(Settings::compatMode());
  host.standardUserDefaults().remove("compatMode");
  EXPECT_FALSE(Settings::compatMode());
}

TEST_F(SettingsTest, hotKeyIsWrittenCodeFirst) {
  Settings::setHotKey(platform::KeyCode{17}, platform::Modifiers{0x0900});
  EXPECT_EQ(host.calls().of("userDefaults."),
            (std::vector<std::string>{"userDefaults.setInteger hotKeyCode 17",
                                      "userDefaults.setInteger hotKeyModifiers 2304"}));
  EXPECT_EQ(Settings::hotKeyCode(), platform::KeyCode{17});
  EXPECT_EQ(Settings::hotKeyModifiers(), platform::Modifiers{0x0900});
}

TEST_F(SettingsTest, storeIsTheOneOfTheHost) {
  EXPECT_EQ(&Settings::d(), &host.standardUserDefaults());
}

}  // namespace
}  // namespace lexwend
