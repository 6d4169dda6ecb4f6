// SPDX-License-Identifier: MIT
// The language of the scenarios and what its runner says when something is wrong.
#include "tests/scenarios/script.h"

#include <memory>
#include <string>
#include <string_view>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/scenarios/fake_world.h"
#include "tests/scenarios/runner.h"

namespace lexwend::scenarios {
namespace {

using testing::AllOf;
using testing::HasSubstr;

/// The error of a script, or "no error".
std::string errorOf(std::string_view text) {
  try {
    parseScript("x.scenario", text);
  } catch (const ScriptError& error) {
    return error.what();
  }
  return "no error";
}

/// The report of the only scenario of a script.
std::string reportOf(std::string_view text) {
  const auto scenarios = parseScript("x.scenario", text);
  return runScenario(scenarios.at(0), [] { return std::make_unique<FakeWorld>(); });
}

TEST(Script, readsTitlesStepsAndBlocks) {
  const auto scenarios = parseScript("x.scenario",
                                     "# comment\n"
                                     "scenario \"One\"\n"
                                     "given\n"
                                     "  app Editor com.example\n"
                                     "when\n"
                                     "  press Control+Option+Shift+Cmd+F5\n"
                                     "then\n"
                                     "  log\n"
                                     "    | first \n"
                                     "    |\n"
                                     "    |  third\n"
                                     "  text \"a \\\"quoted\\\" \\\\ text\\n\"\n"
                                     "scenario \"Two\"\n"
                                     "when\n"
                                     "  wait 5\n"
                                     "then\n"
                                     "  no alerts\n");
  ASSERT_EQ(scenarios.size(), 2U);
  EXPECT_EQ(scenarios[0].title, "One");
  EXPECT_EQ(scenarios[1].line, 13);
  ASSERT_EQ(scenarios[0].steps.size(), 4U);
  EXPECT_EQ(std::get<ActStep>(scenarios[0].steps[0].what).arguments, (Words{"Editor", "com.example"}));
  EXPECT_EQ(std::get<CheckStep>(scenarios[0].steps[2].what).expected, (Words{"first ", "", " third"}));
  EXPECT_EQ(std::get<CheckStep>(scenarios[0].steps[3].what).expected, Words{"a \"quoted\" \\ text\n"});
}

TEST(Script, combinationsHaveCodesModifiersAndNames) {
  const auto all = parseCombination("Control+Option+Shift+Cmd+F5");
  EXPECT_EQ(all.keyCode, 96U);
  EXPECT_EQ(all.carbonModifiers, 0x1B00U);
  EXPECT_EQ(combinationName(96, 0x1B00), "Control+Option+Shift+Cmd+F5");
  EXPECT_EQ(parseCombination("#123").keyCode, 123U);
  EXPECT_EQ(parseCombination("Cmd+,").keyCode, 43U);
  EXPECT_EQ(combinationName(300, 0), "#300");
  EXPECT_EQ(combinationName(17, 0x0D00), "Option+Cmd+#1024+T");
  EXPECT_THROW(parseCombination("Hyper+A"), ScriptMistake);
  EXPECT_THROW(parseCombination("F99"), ScriptMistake);
  EXPECT_THROW(parseCombination("#70000"), ScriptMistake);
}

struct WrongScript {
  const char* name;
  const char* text;
  const char* error;
};

class WrongScripts : public testing::TestWithParam<WrongScript> {};

TEST_P(WrongScripts, areErrorsWithFileLineAndReason) {
  EXPECT_EQ(errorOf(GetParam().text), std::string("x.scenario:") + GetParam().error);
}

const WrongScript kWrongScripts[] = {
    {"empty", "# nothing\n", "1: no scenario in this file"},
    {"unknownVerb", "scenario \"s\"\nwhen\n  jump high\n", "3: nobody knows how to \"jump high\""},
    {"unknownCheck", "scenario \"s\"\nwhen\n  wait 1\nthen\n  happiness\n",
     "5: nobody knows how to check \"happiness\""},
    {"checkOutsideThen", "scenario \"s\"\nwhen\n  beeps 1\n", "3: only a then can say \"beeps 1\""},
    {"actInsideThen", "scenario \"s\"\nwhen\n  wait 1\nthen\n  press F2\n",
     "5: a then cannot do \"press F2\""},
    {"noThen", "scenario \"s\"\nwhen\n  wait 1\n", "1: the scenario \"s\" has no then"},
    {"emptyThen", "scenario \"s\"\nwhen\n  wait 1\nthen\n", "4: an empty section"},
    {"emptyWhen", "scenario \"s\"\nwhen\nthen\n  beeps 0\n", "2: an empty section"},
    {"whenAtTheEnd", "scenario \"s\"\nwhen\n  wait 1\nthen\n  beeps 0\nwhen\n  wait 1\n",
     "6: the scenario \"s\" does not end with a then"},
    {"doesNothing", "scenario \"s\"\nthen\n  beeps 0\n", "1: the scenario \"s\" does nothing"},
    {"givenTwice", "scenario \"s\"\ngiven\n  layouts US\ngiven\n  layouts US\n",
     "4: given comes first and once"},
    {"noTitle", "scenario\n", "1: a scenario needs one title in quotation marks"},
    {"unquotedTitle", "scenario word\n", "1: a scenario needs one title in quotation marks"},
    {"sameTitle", "scenario \"s\"\nwhen\n  wait 1\nthen\n  beeps 0\nscenario \"s\"\n",
     "6: a second scenario \"s\""},
    {"beforeScenario", "press F2\n", "1: \"press\" before the first scenario"},
    {"sectionBeforeScenario", "given\n", "1: \"given\" before the first scenario"},
    {"outsideSection", "scenario \"s\"\n  press F2\n", "2: \"press\" outside of given, when and then"},
    {"tooFewArguments", "scenario \"s\"\nwhen\n  press\n", "3: \"press\" takes 1 argument, not 0"},
    {"tooManyArguments", "scenario \"s\"\nwhen\n  wake up\n", "3: \"wake\" takes no arguments, not 1"},
    {"atLeast", "scenario \"s\"\nwhen\n  layouts\n", "3: \"layouts\" takes at least 1 arguments, not 0"},
    {"badCombination", "scenario \"s\"\nwhen\n  press Cmd+Nothing\n",
     "3: \"Cmd+Nothing\" is no key combination"},
    {"badModifier", "scenario \"s\"\nwhen\n  hold Cmd Hyper\n",
     "3: \"Hyper\" is no modifier (Cmd, Shift, Option, Control)"},
    {"badNumber", "scenario \"s\"\nwhen\n  wait long\n", "3: \"long\" is no whole number"},
    {"missingValue", "scenario \"s\"\nwhen\n  wait 1\nthen\n  beeps\n",
     "5: \"beeps\" expects exactly one value"},
    {"valueTooMany", "scenario \"s\"\nwhen\n  wait 1\nthen\n  no alerts 3\n",
     "5: \"no alerts\" expects no value"},
    {"checkOfNothing", "scenario \"s\"\nwhen\n  wait 1\nthen\n  setting\n",
     "5: \"setting\" does not say of what"},
    {"noBlock", "scenario \"s\"\nwhen\n  wait 1\nthen\n  log\n", "5: no line with a bar follows"},
    {"blockInLine", "scenario \"s\"\nwhen\n  wait 1\nthen\n  log x\n",
     "5: \"log\" expects lines that begin with a bar, below it"},
    {"strayBlock", "scenario \"s\"\nwhen\n  wait 1\n  | x\n", "4: a line with a bar that belongs to nothing"},
    {"openQuote", "scenario \"s\nwhen\n", "1: a quoted text without its end"},
    {"badEscape", "scenario \"s\"\nwhen\n  text \"\\q\"\n", "3: an unknown escape in a quoted text"},
    {"gluedQuote", "scenario \"s\"\nwhen\n  text \"a\"b\n",
     "3: a quoted text is followed by something other than a blank"},
    {"quoteInWord", "scenario \"s\"\nwhen\n  text a\"b\n", "3: a quotation mark in the middle of a word"},
    {"quotedVerb", "scenario \"s\"\nwhen\n  \"press\" F2\n", "3: a line begins with a quoted text"},
};

INSTANTIATE_TEST_SUITE_P(Script, WrongScripts, testing::ValuesIn(kWrongScripts),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST(Runner, aScenarioThatIsSoReportsNothing) {
  EXPECT_EQ(reportOf("scenario \"s\"\nwhen\n  start\nthen\n  icon keyboard\n"), "");
}

TEST(Runner, aFailedCheckShowsExpectedAndActualSideBySide) {
  EXPECT_EQ(
      reportOf(
          "scenario \"Title\"\nwhen\n  start\nthen\n  log\n    | hotkey: register F3 ok=true\n    | x\n"),
      "scenario \"Title\"\n"
      "x.scenario:5: log\n"
      "    expected                    | actual\n"
      "  ! hotkey: register F3 ok=true | hotkey: register F2 ok=true\n"
      "  ! x                           | \n");
}

TEST(Runner, everyFailedCheckIsReported) {
  const auto report = reportOf("scenario \"s\"\nwhen\n  start\nthen\n  icon xmark\n  beeps 0\n  beeps 7\n");
  EXPECT_THAT(report, AllOf(HasSubstr("x.scenario:5: icon xmark"), HasSubstr("x.scenario:7: beeps 7"),
                            testing::Not(HasSubstr(":6:"))));
}

TEST(Runner, hasLacksAndEndsFailWhenTheyShould) {
  const std::string head = "scenario \"s\"\nwhen\n  start\nthen\n  ";
  EXPECT_EQ(reportOf(head + "log has \"hotkey: register F2 ok=true\"\n"), "");
  EXPECT_NE(reportOf(head + "log has \"hotkey: register\"\n"), "") << "has means a whole line";
  EXPECT_EQ(reportOf(head + "log lacks \"fix:\"\n"), "");
  EXPECT_NE(reportOf(head + "log lacks \"register\"\n"), "");
  EXPECT_NE(reportOf(head + "log ends\n    | a\n    | hotkey: register F2 ok=true\n"), "");
}

TEST(Runner, whatIsPreparedAndNeverUsedFailsTheScenario) {
  EXPECT_THAT(
      reportOf("scenario \"s\"\ngiven\n  alert answer \"OK\"\nwhen\n  start\nthen\n  icon keyboard\n"),
      HasSubstr("x.scenario:1: the alert answer \"OK\" was prepared and no alert came"));
  EXPECT_THAT(
      reportOf("scenario \"s\"\ngiven\n  fail next closeFile\nwhen\n  start\nthen\n  icon keyboard\n"),
      HasSubstr("closeFile"));
  EXPECT_THAT(
      reportOf("scenario \"s\"\ngiven\n  focus answer nothing\nwhen\n  start\nthen\n  icon keyboard\n"),
      HasSubstr("x.scenario:1: the answer prepared for the focused element was never asked for"));
}

TEST(Runner, anUnansweredAlertFailsTheScenario) {
  EXPECT_THAT(
      reportOf("scenario \"s\"\ngiven\n  permission missing\nwhen\n  start\n  press F2\nthen\n  beeps 0\n"),
      HasSubstr("has no answer prepared"));
}

TEST(Runner, whatCannotBeClickedFailsTheScenario) {
  EXPECT_THAT(reportOf("scenario \"s\"\nwhen\n  start\n  choose \"נדרש אישור נגישות…\"\nthen\n  beeps 0\n"),
              HasSubstr("cannot be chosen: it is hidden"));
  EXPECT_THAT(reportOf("scenario \"s\"\nwhen\n  start\n  click save\nthen\n  beeps 0\n"),
              HasSubstr("no recorder window is open"));
}

struct Mistake {
  const char* name;
  const char* act;
  const char* reason;
};

class Mistakes : public testing::TestWithParam<Mistake> {};

TEST_P(Mistakes, areReportedWithFileLineAndReason) {
  EXPECT_EQ(reportOf(std::string("scenario \"s\"\nwhen\n  ") + GetParam().act + "\nthen\n  beeps 0\n"),
            std::string("scenario \"s\"\nx.scenario:3: ") + GetParam().reason + "\n");
}

const Mistake kMistakes[] = {
    {"unknownLayout", "layouts Klingon", "there is no layout \"Klingon\""},
    {"disabledLayout", "use layout Russian", "the layout \"Russian\" is not enabled"},
    {"unknownApplication", "front Nothing", "there is no application \"Nothing\""},
    {"nobodyInFront", "text x", "no application is in front"},
    {"unknownFailure", "fail next everything", "\"everything\" is nothing that can fail"},
    {"unknownState", "secure input maybe", "\"maybe\" is none of: on off"},
    {"oddPasteboardItem", "pasteboard item a b c", "a pasteboard item is pairs of type and data"},
    {"settingWithoutValue", "setting hotKeyCode integer", "a setting of the kind \"integer\" needs a value"},
    {"unknownSettingKind", "setting hotKeyCode shape 5",
     "\"shape\" is no kind of setting (integer, bool, text, real, other)"},
    {"negativeTime", "wait -5", "time does not run backwards: -5"},
    {"unknownButton", "click maybe", "\"maybe\" is none of: save cancel close"},
};

INSTANTIATE_TEST_SUITE_P(Runner, Mistakes, testing::ValuesIn(kMistakes),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST(Runner, aTextThatIsNotThereCannotBeSelected) {
  EXPECT_THAT(reportOf("scenario \"s\"\nwhen\n  app E\n  text abc\n  select xyz\nthen\n  beeps 0\n"),
              HasSubstr("x.scenario:5: the text to select is not in the field"));
}

TEST(Runner, aProcessThatShouldStopAndDoesNotFailsTheScenario) {
  EXPECT_THAT(reportOf("scenario \"s\"\nwhen\n  start\nthen\n  process stops \"why\"\n"),
              AllOf(HasSubstr("the process did not stop"), HasSubstr("the process goes on")));
}

TEST(Runner, aProcessThatStopsWithOtherWordsFailsTheScenario) {
  EXPECT_THAT(reportOf("scenario \"s\"\ngiven\n  setting hotKeyCode integer -1\nwhen\n  start\nthen\n"
                       "  process stops \"another reason\"\n"),
              HasSubstr("the process stopped with other words"));
}

TEST(Runner, aProcessThatStopsWithTheseWordsPasses) {
  EXPECT_EQ(reportOf("scenario \"s\"\ngiven\n  setting hotKeyCode integer -1\nwhen\n  start\nthen\n"
                     "  process stops \"hot-key number\"\n"),
            "");
}

TEST(Runner, hebrewLinesKeepTheColumnsStraight) {
  EXPECT_EQ(sideBySide({"שלום", "a"}, {"שלום"}),
            "    expected | actual\n"
            "    שלום     | שלום\n"
            "  ! a        | \n");
}

}  // namespace
}  // namespace lexwend::scenarios
