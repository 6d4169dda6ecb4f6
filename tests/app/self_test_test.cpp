// SPDX-License-Identifier: MIT
#include "app/self_test.h"

#include <sstream>
#include <string>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "input/input_sources.h"
#include "platform/fake/fake_host.h"
#include "tests/app/fallback_report.h"

namespace lexwend::tests {
namespace {

using platform::FakeHost;
using platform::FakeOperation;
using testing::HasSubstr;

/// The report of the installed layouts.
std::string run() {
  std::ostringstream out;
  SelfTest::run(out);
  return out.str();
}

std::string report(const LayoutMap& map) {
  std::ostringstream out;
  SelfTest::report(out, map);
  return out.str();
}

TEST(SelfTest, fallbackReportIsThisToTheByte) {
  FakeHost host;
  const platform::HostScope scope(host);
  host.inputSourceService().setLayouts({platform::usLayout()});
  EXPECT_EQ(run(), kFallbackReport);
}

TEST(SelfTest, noLayoutAtAllGivesTheFallbackReport) {
  FakeHost host;
  const platform::HostScope scope(host);
  host.inputSourceService().setLayouts({});
  EXPECT_EQ(run(), kFallbackReport);
}

TEST(SelfTest, systemLayoutsPassAndTheirCountsStandInTheHeadings) {
  FakeHost host;
  const platform::HostScope scope(host);
  const auto map = LayoutMap::build(InputSources::keyTables());
  const std::string text = run();
  EXPECT_TRUE(text.starts_with("source: system layouts\ncurrent layout is Hebrew: false\n\n== toHebrew ("));
  EXPECT_THAT(text, HasSubstr("\n\n== toHebrew (" + std::to_string(map.toHebrew.size()) + ")\n"));
  EXPECT_THAT(text, HasSubstr("\n\n== toEnglish (" + std::to_string(map.toEnglish.size()) + ")\n"));
  EXPECT_TRUE(text.ends_with("\n\nALL PASSED\n"));
}

TEST(SelfTest, tellsWhetherTheLayoutInUseIsHebrew) {
  FakeHost host;
  const platform::HostScope scope(host);
  const auto line = [] { return run().substr(run().find('\n') + 1, 31); };
  EXPECT_EQ(line(), "current layout is Hebrew: false");
  host.inputSourceService().use("com.apple.keylayout.Hebrew");
  EXPECT_EQ(line(), "current layout is Hebrew: true\n");
  host.inputSourceService().useNone();
  EXPECT_EQ(line(), "current layout is Hebrew: false");

  auto second = platform::hebrewLayout();
  second.languages = std::vector<std::string>{"yi", "he"};
  host.inputSourceService().setLayouts({platform::usLayout(), second});
  host.inputSourceService().use("com.apple.keylayout.Hebrew");
  EXPECT_EQ(line(), "current layout is Hebrew: true\n");

  second.languages = platform::MistypedProperty{};
  host.inputSourceService().setLayouts({platform::usLayout(), second});
  host.inputSourceService().use("com.apple.keylayout.Hebrew");
  EXPECT_EQ(line(), "current layout is Hebrew: false");
}

TEST(SelfTest, writesNoLogAndAsksForNoPermission) {
  FakeHost host;
  const platform::HostScope scope(host);
  run();
  EXPECT_EQ(host.logFile(), "");
  for (const auto& call : host.calls().all()) EXPECT_TRUE(call.starts_with("inputSources.")) << call;
}

/// A map with everything that can go wrong, and the report that it must give.
TEST(SelfTest, reportsMismatchesAndFailuresToTheByte) {
  FakeHost host;
  const platform::HostScope scope(host);
  host.inputSourceService().use("com.apple.keylayout.Hebrew");
  LayoutMap map;
  map.builtFromSystem = true;
  map.toHebrew = {{"a", "ש"}, {"k", "ש"}, {"A", "ש"}, {"z", "ז"}, {"é", "é"}};
  map.toEnglish = {{"ש", "a"}, {"é", "é"}, {"ף", ";"}};
  EXPECT_EQ(report(map), R"report(source: system layouts
current layout is Hebrew: true

== toHebrew (5)
  A -> ש
  a -> ש
  k -> ש
  z -> ז
  é -> é

== toEnglish (3)
  é -> é
  ף -> ;
  ש -> a

== round trip check (en -> he -> en)
  MISMATCH k -> ש -> a
  MISMATCH z -> ז -> ∅
  2 mismatches

== conversions
  FAIL [en] "akuo nv akunl" -> "ששuo nv ששunl"  expected "שלום מה שלומך"
  FAIL [he] "יקךךם" -> "יקךךם"  expected "hello"
  FAIL [he] "hello, world." -> "hello, world."  expected "יקךךםת ׳םרךגץ"
  FAIL [he] "יקךךםת ׳םרךגץ" -> "יקךךםת ׳םרךגץ"  expected "hello, world."
  FAIL [en] "Akuo" -> "ששuo"  expected "שלום"
  FAIL [en] "היי akuo nv" -> "היי ששuo nv"  expected "היי שלום מה"
  FAIL [he] "היי akuo nv" -> "היי akuo nv"  expected "vhh akuo nv"
  FAIL [he] "שלום 123" -> "aלום 123"  expected "akuo 123"
  FAIL [en] "nv akunl?" -> "nv ששunl?"  expected "מה שלומך?"
  FAIL [en] "(akuo)" -> "(ששuo)"  expected ")שלום("

10 FAILED
)report");
}

TEST(SelfTest, capitalsTakeNoPartInTheRoundTrip) {
  FakeHost host;
  const platform::HostScope scope(host);
  LayoutMap map = LayoutMap::fallback();
  map.toHebrew["É"] = "x";  // upper case, no way back
  EXPECT_THAT(report(map), HasSubstr("\n== round trip check (en -> he -> en)\n  all good\n"));
  map.toHebrew["é"] = "x";
  EXPECT_THAT(report(map), HasSubstr("\n  MISMATCH é -> x -> ∅\n  1 mismatches\n"));
}

TEST(SelfTest, emptyMapsRoundTripAndFailToConvert) {
  FakeHost host;
  const platform::HostScope scope(host);
  const std::string text = report(LayoutMap());
  EXPECT_THAT(text, HasSubstr("\n\n== toHebrew (0)\n\n== toEnglish (0)\n\n== round trip check"));
  EXPECT_THAT(text, HasSubstr("\n  all good\n"));
  EXPECT_TRUE(text.ends_with("\n10 FAILED\n"));
}

TEST(SelfTestDeathTest, valueThatIsNotOneCharacterStopsTheProcess) {
  FakeHost host;
  const platform::HostScope scope(host);
  for (const char* value : {"", "שש", "ab"}) {
    LayoutMap map = LayoutMap::fallback();
    map.toHebrew["a"] = value;
    EXPECT_DEATH(report(map), "not one character");
  }
}

TEST(SelfTest, valueOfACapitalIsNotLookedAt) {
  FakeHost host;
  const platform::HostScope scope(host);
  LayoutMap map = LayoutMap::fallback();
  map.toHebrew["Z"] = "";
  EXPECT_THAT(report(map), HasSubstr("\n  Z -> \n"));
  EXPECT_THAT(report(map), HasSubstr("  all good"));
}

TEST(SelfTest, oneCharacterOfSeveralScalarsIsAllowed) {
  FakeHost host;
  const platform::HostScope scope(host);
  LayoutMap map;
  map.toHebrew = {{"a", "שׁ"}};  // with a shin dot
  map.toEnglish = {{"שׁ", "a"}};
  EXPECT_THAT(report(map), HasSubstr("  all good"));
}

}  // namespace
}  // namespace lexwend::tests
