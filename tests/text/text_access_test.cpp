// SPDX-License-Identifier: MIT
#include "text/text_access.h"

#include <gtest/gtest.h>

#include "tests/text/text_fixture.h"

namespace lexwend {
namespace {

using TextAccess::Failure;
using TextAccessTest = TextFixture;

TEST(TextAccessFailure, casesStandInThisOrderUnderTheseNames) {
  const std::vector<std::pair<Failure, const char*>> cases = {{Failure::secureInput, "secureInput"},
                                                              {Failure::noSelection, "noSelection"},
                                                              {Failure::noPermission, "noPermission"},
                                                              {Failure::nothingToChange, "nothingToChange"}};
  for (std::size_t i = 0; i < cases.size(); ++i) {
    EXPECT_EQ(static_cast<std::size_t>(cases[i].first), i);
    EXPECT_STREQ(TextAccess::caseName(cases[i].first), cases[i].second);
    EXPECT_STREQ(TextAccess::Error(cases[i].first).what(), cases[i].second);
  }
}

TEST_F(TextAccessTest, secureInputIsAskedOnceAndTrustTwice) {
  replace();
  EXPECT_EQ(host.calls().count("secureInput."), 1u);
  EXPECT_EQ(host.calls().count("accessibility.isProcessTrusted"), 2u);
}

TEST_F(TextAccessTest, settingThatChangesAfterTheLineDecides) {
  std::size_t trustQueries = 0;
  host.standardUserDefaults().afterNextRead("compatMode", [&] {
    trustQueries = host.calls().count("accessibility.isProcessTrusted");
    setCompatMode(true);
  });
  EXPECT_EQ(replace(), std::nullopt);
  EXPECT_EQ(log(), (Lines{"replaceSelection: secureInput=false trusted=true compat=false",
                          "clipboard: copied 4 chars after 0ms (attempt 1)", "clipboard: pasted 4 chars"}));
  EXPECT_EQ(trustQueries, 1u) << "for the line, trust is asked for before the setting";
}

TEST_F(TextAccessTest, permissionThatIsLostAfterTheLineDecides) {
  host.standardUserDefaults().afterNextRead("compatMode", [&] { host.accessibility().setTrusted(false); });
  EXPECT_EQ(replace(), Failure::noPermission);
  EXPECT_EQ(log(), (Lines{"replaceSelection: secureInput=false trusted=true compat=false"}));
  expectNothingTouched();
}

}  // namespace
}  // namespace lexwend
