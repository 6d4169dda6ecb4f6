// SPDX-License-Identifier: MIT
#include "platform/linux/selection/targets.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace lexwend::platform {
namespace {

TEST(ClipboardTypeNames, areTheTargetsNameWhereItSaysEverything) {
  EXPECT_EQ(encodedTypeName({"image/png", "image/png", 8, {}}), "image/png");
  EXPECT_EQ(encodedTypeName({"TEXT", "UTF8_STRING", 8, {}}), "TEXT");
}

TEST(ClipboardTypeNames, keepTypeAndFormatThatDeviate) {
  for (const ClipboardTarget& target :
       {ClipboardTarget{"TEXT", "COMPOUND_TEXT", 8, {}}, ClipboardTarget{"TEXT", "TEXT", 8, {}},
        ClipboardTarget{"LENGTH", "INTEGER", 32, {}}, ClipboardTarget{"image/png", "image/png", 16, {}},
        ClipboardTarget{"a\tb", "UTF8_STRING", 8, {}}, ClipboardTarget{"text/plain", "", 8, {}}}) {
    const ClipboardTarget back = targetOfTypeName(encodedTypeName(target));
    EXPECT_EQ(back.propertyType, target.propertyType);
    EXPECT_EQ(back.format, target.format);
    EXPECT_EQ(back.name, target.name);
  }
}

TEST(ClipboardTypeNames, withoutEncodingStandForThemselves) {
  for (const char* name : {"image/png", "", "odd\tname", "odd\tname\t7", "x\ty\t"}) {
    const ClipboardTarget target = targetOfTypeName(name);
    EXPECT_EQ(target.name, name);
    EXPECT_EQ(target.propertyType, name);
    EXPECT_EQ(target.format, 8);
  }
  EXPECT_EQ(targetOfTypeName("TEXT").propertyType, "UTF8_STRING");
}

TEST(PassingText, offersStringOnlyWhenItHoldsTheText) {
  const auto names = [](const ClipboardContents& contents) {
    std::vector<std::string> result;
    for (const auto& target : contents) result.push_back(target.name);
    return result;
  };
  EXPECT_THAT(names(passingTextContents("abc")), testing::Contains("STRING"));
  EXPECT_THAT(names(passingTextContents("שלום")), testing::Not(testing::Contains("STRING")));
}

}  // namespace
}  // namespace lexwend::platform
