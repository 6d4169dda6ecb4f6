// SPDX-License-Identifier: MIT
#include "platform/linux/keymap/xkb_layouts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace lexwend::platform {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(RulesNames, pairLayoutsWithVariants) {
  using namespace std::string_literals;
  const auto names = parseRulesNames("evdev\0pc105\0us,il,de\0,lyx\0grp:alt_shift_toggle\0"s);
  ASSERT_EQ(names.size(), 3U);
  EXPECT_EQ(names[0].id(), "us");
  EXPECT_EQ(names[1].id(), "il(lyx)");
  EXPECT_EQ(names[2].id(), "de");
}

TEST(RulesNames, namesNothingWhereThereIsNothing) {
  using namespace std::string_literals;
  EXPECT_THAT(parseRulesNames(""), IsEmpty());
  EXPECT_THAT(parseRulesNames("evdev\0pc105"s), IsEmpty());
  EXPECT_THAT(parseRulesNames("evdev\0pc105\0\0\0\0"s), IsEmpty());
}

TEST(LayoutLanguages, areTwoLetterCodesOfLayoutAndVariantTogether) {
  EXPECT_THAT(languagesOf({"us", ""}), ElementsAre("en"));
  EXPECT_THAT(languagesOf({"gb", ""}), ElementsAre("en"));
  EXPECT_THAT(languagesOf({"il", ""}), ElementsAre("he"));
  EXPECT_THAT(languagesOf({"il", "lyx"}), ElementsAre("he"));
  EXPECT_THAT(languagesOf({"de", ""}), ElementsAre("de"));
  EXPECT_THAT(languagesOf({"us", "dvorak"}), ElementsAre("en"));
  EXPECT_THAT(languagesOf({"us", "rus"}), ElementsAre("ru"));
  EXPECT_THAT(languagesOf({"us", "chr"}), ElementsAre("chr"));
}

TEST(LayoutLanguages, ofAnUnlistedVariantAreTheLayouts) {
  EXPECT_THAT(languagesOf({"il", "of-my-own"}), ElementsAre("he"));
  EXPECT_THAT(languagesOf({"of-my-own", ""}), IsEmpty());
}

TEST(LayoutDescriptions, nameTheirLayouts) {
  EXPECT_EQ(layoutDescribedAs("English (US)"), (XkbLayoutName{"us", ""}));
  EXPECT_EQ(layoutDescribedAs("Hebrew"), (XkbLayoutName{"il", ""}));
  EXPECT_EQ(layoutDescribedAs("English (Dvorak)"), (XkbLayoutName{"us", "dvorak"}));
  EXPECT_EQ(layoutDescribedAs("a layout of my own"), std::nullopt);
}

TEST(PlaceOfALayout, isByItsNameWhereTheOrderHasChanged) {
  const std::vector<XkbLayoutName> layouts = {{"il", ""}, {"us", ""}, {"il", ""}};
  EXPECT_EQ(placeOf({{"us", ""}, 0}, layouts), 1U);
  EXPECT_EQ(placeOf({{"il", ""}, 2}, layouts), 2U);
  EXPECT_EQ(placeOf({{"de", ""}, 0}, layouts), std::nullopt);
}

}  // namespace
}  // namespace lexwend::platform
