// SPDX-License-Identifier: MIT
#include "app/entry.h"

#include <sstream>
#include <string>
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

TEST(Entry, selfTestRunsWhereverItStandsOnTheCommandLine) {
  for (const auto& options :
       {std::vector<std::string>{"--verbose", "--selftest"}, std::vector<std::string>{"--selftest", "x"},
        std::vector<std::string>{"", "--selftest"}}) {
    Start start;
    EXPECT_EQ(start(options), 0);
    EXPECT_TRUE(start.out.str().starts_with("source: "));
    EXPECT_FALSE(start.agentRan());
  }
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

TEST(Entry, selfTestExitsWithZeroEvenWhenItFails) {
  Start start;
  auto hebrew = platform::hebrewLayout();
  hebrew.keys[0].plain = "ת";
  start.host.inputSourceService().setLayouts({platform::usLayout(), hebrew});
  EXPECT_EQ(start({"--selftest"}), 0);
  EXPECT_NE(start.out.str().find(" FAILED\n"), std::string::npos);
}

TEST(Entry, selfTestRunsWhileAnotherInstanceDoes) {
  Start start;
  start.host.runningApplications().add(kIdentifier, 77);
  EXPECT_EQ(start({"--selftest"}), 0);
  EXPECT_NE(start.out.str(), "");
}

TEST(Entry, helpNamesEveryOptionAndNeedsNothing) {
  Start start;
  EXPECT_EQ(start({"--help"}), 0);
  EXPECT_TRUE(start.out.str().starts_with("Usage: lexwend "));
  for (const char* option : {"--selftest", "--help", "--version"}) {
    EXPECT_NE(start.out.str().find(std::string("\n  ") + option), std::string::npos) << option;
  }
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

TEST(Entry, thisProcessIsNoOtherInstance) {
  Start start;
  start.host.runningApplications().addOwnProcess(kIdentifier);
  EXPECT_EQ(start(), 0);
  EXPECT_TRUE(start.agentRan());
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

TEST(Entry, missingBundleIdentifierFallsBackToTheApplicationsOwn) {
  Start start;
  start.host.application().identifier = std::nullopt;
  start.host.runningApplications().add(kIdentifier, 77);
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

TEST(Entry, theAgentWorksWhileTheLoopRuns) {
  Start start;
  const auto editor = start.host.apps().open("Editor", "com.example.editor", "akuo");
  editor->focus()->selectAll();
  start.host.application().whileRunning = [&] {
    EXPECT_NE(start.host.statusBar().item(), nullptr);
    EXPECT_EQ(start.host.userPresses(platform::kKeyF2), platform::KeyFate::ownHotKey);
  };
  EXPECT_EQ(start(), 0);
  EXPECT_EQ(editor->focus()->text(), "שלום");
  EXPECT_EQ(start.host.statusBar().item(), nullptr);  // gone with the delegate
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
