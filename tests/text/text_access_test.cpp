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

TEST_F(TextAccessTest, secureInputIsReportedBeforeAMissingPermission) {
  field->password = true;
  host.accessibility().setTrusted(false);
  EXPECT_EQ(replace(), Failure::secureInput);
  EXPECT_EQ(log(), (Lines{"replaceSelection: secureInput=true trusted=false compat=false"}));
  expectNothingTouched();
}

TEST_F(TextAccessTest, secureInputStopsCompatibilityModeToo) {
  host.secureInput().hold(true);
  setCompatMode(true);
  EXPECT_EQ(replace(), Failure::secureInput);
  EXPECT_EQ(log(), (Lines{"replaceSelection: secureInput=true trusted=true compat=true"}));
  expectNothingTouched();
}

TEST_F(TextAccessTest, missingPermissionStopsBothPaths) {
  host.accessibility().setTrusted(false);
  setCompatMode(true);
  EXPECT_EQ(replace(), Failure::noPermission);
  EXPECT_EQ(log(), (Lines{"replaceSelection: secureInput=false trusted=false compat=true"}));
  expectNothingTouched();
}

TEST_F(TextAccessTest, compatibilityModeNeverEntersTheAccessibilityPath) {
  setCompatMode(true);
  EXPECT_EQ(replace(), std::nullopt);
  EXPECT_EQ(host.accessibility().elementCalls(), 0);
  EXPECT_EQ(log(), (Lines{"replaceSelection: secureInput=false trusted=true compat=true",
                          "clipboard: copied 4 chars after 0ms (attempt 1)", "clipboard: pasted 4 chars"}));
  EXPECT_EQ(field->text(), "AKUO");
}

TEST_F(TextAccessTest, accessibilityPathThatIsDoneIsLogged) {
  EXPECT_EQ(replace(), std::nullopt);
  EXPECT_EQ(field->text(), "AKUO");
  EXPECT_EQ(log().back(), "AX path: done");
  EXPECT_TRUE(host.keyEvents().posted().empty());
}

TEST_F(TextAccessTest, nothingToChangeOnTheAccessibilityPathSimulatesNoCopy) {
  EXPECT_EQ(replaceWith([](std::string_view) { return std::nullopt; }), Failure::nothingToChange);
  EXPECT_TRUE(host.keyEvents().posted().empty());
  EXPECT_EQ(log(), (Lines{"replaceSelection: secureInput=false trusted=true compat=false",
                          "AX: nothing to change"}));
}

TEST_F(TextAccessTest, fallsBackToTheClipboardAndCallsTheTransformAgain) {
  field->answer(platform::AccessOperation::write, "AXSelectedText", platform::FakeAnswer::lies());
  EXPECT_EQ(replace(), std::nullopt);
  EXPECT_EQ(seen, (Lines{"akuo", "akuo"}));
  EXPECT_EQ(log(), (Lines{"replaceSelection: secureInput=false trusted=true compat=false",
                          "AX: role=AXTextArea set ok, valueChanged=false (before=4 after=4)",
                          "AX path: not applicable, falling back to clipboard",
                          "clipboard: copied 4 chars after 0ms (attempt 1)", "clipboard: pasted 4 chars"}));
  EXPECT_EQ(field->text(), "AKUO");
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

TEST_F(TextAccessTest, settingsPageIsOpenedByItsUrl) {
  TextAccess::openAccessibilitySettings();
  EXPECT_EQ(host.workspace().openedUrls(),
            (Lines{"x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility"}));
}

TEST_F(TextAccessTest, settingsPageThatIsNoUrlOpensNothing) {
  host.failNext(platform::FakeOperation::urlFromString);
  TextAccess::openAccessibilitySettings();
  EXPECT_TRUE(host.workspace().openedUrls().empty());
}

}  // namespace
}  // namespace lexwend
