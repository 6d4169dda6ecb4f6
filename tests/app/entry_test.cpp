// SPDX-License-Identifier: MIT
#include "app/entry.h"

#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "hotkey/hot_key_center.h"
#include "platform/fake/fake_host.h"
#include "tests/call_order.h"

namespace lexwend::tests {
namespace {

using platform::FakeHost;
using platform::FakeOperation;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kIdentifier = "org.lexwend.Lexwend";

/// One start of the program.
struct Start {
  FakeHost host;
  platform::HostScope scope{host};
  HotKeyCenter center;
  std::ostringstream out;
  std::ostringstream err;

  int operator()(std::vector<std::string> options = {}) {
    options.insert(options.begin(), "/usr/bin/lexwend");
    return runEntry(options, center, out, err);
  }
  bool agentRan() { return host.calls().count("application.run") == 1; }
};

TEST(Entry, selfTestReportsAndMakesNoApplication) {
  Start start;
  EXPECT_EQ(start({"--selftest"}), 0);
  EXPECT_TRUE(start.out.str().starts_with("source: system layouts\n"));
  EXPECT_TRUE(start.out.str().ends_with("\nALL PASSED\n"));
  EXPECT_EQ(start.err.str(), "");
  EXPECT_THAT(start.host.calls().of("application."), IsEmpty());
  EXPECT_THAT(start.host.calls().of("runningApplications."), IsEmpty());
  EXPECT_THAT(start.host.calls().of("statusBar."), IsEmpty());
  EXPECT_EQ(start.host.logFile(), "");
}

TEST(Entry, selfTestAsTheProgramPathCounts) {
  Start start;
  EXPECT_EQ(runEntry({"--selftest"}, start.center, start.out, start.err), 0);
  EXPECT_TRUE(start.out.str().starts_with("source: "));
  EXPECT_FALSE(start.agentRan());
}

TEST(Entry, wordsThatOnlyResembleTheSwitchStartTheAgent) {
  for (const std::string option :
       {"--selftest=1", "-selftest", "--selftes", "--SELFTEST", " --selftest", "selftest"}) {
    Start start;
    EXPECT_EQ(start({option}), 0) << option;
    EXPECT_EQ(start.out.str(), "") << option;
    EXPECT_TRUE(start.agentRan()) << option;
  }
}

TEST(Entry, helpNamesEveryOptionAndNeedsNothing) {
  Start start;
  EXPECT_EQ(start({"--help"}), 0);
  EXPECT_TRUE(start.out.str().starts_with("Usage: lexwend "));
  for (const char* option :
       {"--fix", "--menu", "--settings", "--quit", "--selftest", "-h, --help", "--version"}) {
    EXPECT_NE(start.out.str().find(std::string("\n  ") + option), std::string::npos) << option;
  }
  EXPECT_THAT(start.host.calls().all(), IsEmpty());
}

TEST(Entry, helpFitsAScreenShowsExamplesAndNamesTheFiles) {
  Start start;
  EXPECT_EQ(start({"-h"}), 0);
  std::istringstream text(start.out.str());
  int lines = 0;
  for (std::string line; std::getline(text, line); ++lines) EXPECT_LE(line.size(), 80U) << line;
  EXPECT_LE(lines, 24);
  for (const char* part : {"Examples:\n", "lexwend --fix ", "Files:\n", "Library/Logs/Lexwend.log",
                           ".config/lexwend/settings", ".config/autostart/org.lexwend.Lexwend.desktop"}) {
    EXPECT_NE(start.out.str().find(part), std::string::npos) << part;
  }
}

TEST(Entry, commandGoesToTheInstanceThatRunsAndStartsNone) {
  const std::vector<std::pair<std::string, std::string>> kCommands = {
      {"--fix", "0"}, {"--menu", "1"}, {"--settings", "2"}, {"--quit", "3"}};
  for (const auto& [option, number] : kCommands) {
    Start start;
    start.host.runningInstance().answer = platform::InstanceAnswer::taken;
    EXPECT_EQ(start({option}), 0) << option;
    EXPECT_THAT(start.host.calls().all(), ElementsAre("runningInstance.pass " + number));
    EXPECT_EQ(start.out.str() + start.err.str(), "");
  }
}

TEST(Entry, commandThatIsNotTakenSaysWhyAndFails) {
  using platform::InstanceAnswer;
  const std::vector<std::pair<InstanceAnswer, std::string>> kAnswers = {
      {InstanceAnswer::nobodyRuns, "no agent runs"},
      {InstanceAnswer::dropped, "busy"},
      {InstanceAnswer::unreachable, "does not answer"},
      {InstanceAnswer::notHere, "on Linux only"}};
  for (const auto& [answer, words] : kAnswers) {
    Start start;
    start.host.runningInstance().answer = answer;
    EXPECT_EQ(start({"--fix"}), 1);
    EXPECT_THAT(start.err.str(), testing::StartsWith("lexwend: "));
    EXPECT_THAT(start.err.str(), testing::HasSubstr(words));
    EXPECT_FALSE(start.agentRan());
    EXPECT_EQ(start.host.logFile(), "");
  }
}

TEST(Entry, twoCommandsAreRefused) {
  Start start;
  EXPECT_EQ(start({"--fix", "--quit"}), 2);
  EXPECT_EQ(start.err.str(), "lexwend: give one of --fix, --menu, --settings and --quit\n");
  EXPECT_THAT(start.host.calls().all(), IsEmpty());
}

TEST(Entry, versionIsOneLineAndNeedsNothing) {
  Start start;
  EXPECT_EQ(start({"--version"}), 0);
  EXPECT_EQ(start.out.str(), "lexwend " LEXWEND_VERSION "\n");
  EXPECT_THAT(start.host.calls().all(), IsEmpty());
}

TEST(Entry, selfTestWinsOverHelpAndHelpOverVersion) {
  Start selfTest;
  EXPECT_EQ(selfTest({"--help", "--version", "--selftest"}), 0);
  EXPECT_TRUE(selfTest.out.str().starts_with("source: "));
  Start help;
  EXPECT_EQ(help({"--version", "--help"}), 0);
  EXPECT_TRUE(help.out.str().starts_with("Usage: "));
}

TEST(Entry, reportsNeedNoHostAtAll) {
  HotKeyCenter center;
  for (const std::string option : {"--help", "--version"}) {
    std::ostringstream out;
    std::ostringstream err;
    EXPECT_EQ(runEntry({"lexwend", option}, center, out, err), 0);
    EXPECT_NE(out.str(), "");
  }
}

TEST(Entry, secondInstanceLeavesSilently) {
  Start start;
  start.host.runningApplications().addOwnProcess(kIdentifier);
  start.host.runningApplications().add(kIdentifier, 77);
  EXPECT_EQ(start(), 0);
  EXPECT_THAT(start.host.calls().all(),
              ElementsAre("runningApplications.withBundleIdentifier org.lexwend.Lexwend"));
  EXPECT_EQ(start.out.str(), "");
  EXPECT_EQ(start.err.str(), "");
  EXPECT_EQ(start.host.logFile(), "");
  EXPECT_EQ(start.host.statusBar().item(), nullptr);
}

TEST(Entry, otherProgramsAreNoOtherInstance) {
  Start start;
  start.host.runningApplications().add("org.example.Other", 77);
  EXPECT_EQ(start(), 0);
  EXPECT_TRUE(start.agentRan());
}

TEST(Entry, asksForTheIdentifierOfItsBundle) {
  Start start;
  start.host.application().identifier = "org.example.Renamed";
  start.host.runningApplications().add("org.example.Renamed", 77);
  EXPECT_EQ(start(), 0);
  EXPECT_FALSE(start.agentRan());
}

TEST(Entry, reasonWhyNoAgentCanRunGoesToStandardErrorAndTheLog) {
  Start start;
  start.host.failNext(FakeOperation::takeSharedApplication);
  EXPECT_EQ(start(), 1);
  EXPECT_EQ(start.err.str(), "lexwend: There is no desktop to run on.\n");
  EXPECT_THAT(start.host.logMessages(), ElementsAre("There is no desktop to run on."));
  EXPECT_EQ(start.out.str(), "");
  EXPECT_EQ(start.host.statusBar().item(), nullptr);
  EXPECT_FALSE(start.agentRan());
}

TEST(Entry, noticeAboutTheSessionGoesToStandardErrorAndTheLogAndTheAgentRuns) {
  Start start;
  start.host.application().sessionNotice = "Half of it works here.";
  EXPECT_EQ(start(), 0);
  EXPECT_EQ(start.err.str(), "lexwend: Half of it works here.\n");
  EXPECT_EQ(start.host.logMessages().front(), "Half of it works here.");
  EXPECT_TRUE(start.agentRan());
}

TEST(Entry, startsTheAgentStepByStep) {
  Start start;
  EXPECT_EQ(start(), 0);
  EXPECT_TRUE(inOrder(start.host.calls(),
                      {"runningApplications.withBundleIdentifier", "application.takeSharedApplication",
                       "inputSources.createInputSourceList",  // the delegate
                       "application.setDelegate", "application.setActivationPolicy 1", "application.run",
                       "statusBar.statusItem"}));  // the launch
}

TEST(Entry, unknownArgumentsStartTheAgent) {
  Start start;
  EXPECT_EQ(start({"--unknown", "file.txt"}), 0);
  EXPECT_TRUE(start.agentRan());
  EXPECT_EQ(start.err.str(), "");
}

TEST(Entry, writesToStandardOutputWithoutBeingTold) {
  testing::internal::CaptureStdout();
  EXPECT_EQ(runEntry({"lexwend", "--version"}), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "lexwend " LEXWEND_VERSION "\n");
}

}  // namespace
}  // namespace lexwend::tests
