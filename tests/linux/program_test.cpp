// SPDX-License-Identifier: MIT
// The real program where there is nothing: no environment at all, and no file that could be written to.
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/app/fallback_report.h"
#include "tests/linux/testing/temporary_folder.h"
#include "tests/tools/child_process.h"

namespace lexwend::tests {
namespace {

/// The first byte that it would write to a file ends a program under this limit; pipes have none.
Outcome runWithNothing(const std::string& option) {
  return runProgram("/usr/bin/env", {"-i", "/usr/bin/prlimit", "--fsize=0", LEXWEND_PROGRAM, option}, "");
}

/// Where an agent keeps its lock, of which only one can run.
struct RuntimeFolder {
  test::TemporaryFolder folder;
  std::string variable = "XDG_RUNTIME_DIR=" + folder.path();
};

/// The account has a home even without an environment, and the agent its log there.
Outcome runWithoutHome(const std::string& option) {
  const RuntimeFolder runtime;
  return runProgram("/usr/bin/env", {"-i", "HOME=/nonexistent", runtime.variable, LEXWEND_PROGRAM, option},
                    "");
}

TEST(ProgramWithNothing, limitEndsWhoWritesAFile) {
  const auto file = testing::TempDir() + "lexwend-program-test";
  const Outcome outcome = runProgram(
      "/usr/bin/env", {"-i", "/usr/bin/prlimit", "--fsize=0", "/bin/sh", "-c", "echo x > " + file}, "");
  EXPECT_NE(outcome.status, 0);
}

TEST(ProgramWithNothing, testsItselfWithTheBuiltInTable) {
  const Outcome outcome = runWithNothing("--selftest");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.output, kFallbackReport);
  EXPECT_EQ(outcome.errors, "");
}

TEST(ProgramWithNothing, loadsTheDesktopOnlyWhereItIsAsked) {
  const auto loadedFor = [](const std::string& option, const std::string& desktop = "NONE=") {
    const RuntimeFolder runtime;
    return runProgram("/usr/bin/env",
                      {"-i", "HOME=/nonexistent", runtime.variable, desktop, "LD_DEBUG=files",
                       LEXWEND_PROGRAM, option},
                      "")
        .errors;
  };
  EXPECT_THAT(loadedFor("--selftest"), testing::Not(testing::HasSubstr("lexwend-host.so")));
  EXPECT_THAT(loadedFor("--version"), testing::Not(testing::HasSubstr("lexwend-host.so")));
  EXPECT_THAT(loadedFor("--quiet"), testing::HasSubstr("lexwend-host.so"));
  for (const char* const desktop : {"DISPLAY=:nowhere", "WAYLAND_DISPLAY=nowhere", "SWAYSOCK=/nonexistent"}) {
    EXPECT_THAT(loadedFor("--selftest", desktop), testing::HasSubstr("lexwend-host.so")) << desktop;
  }
}

TEST(ProgramWithNothing, tellsItsUsageAndItsVersion) {
  const Outcome help = runWithNothing("--help");
  EXPECT_EQ(help.status, 0);
  EXPECT_THAT(help.output, testing::StartsWith("Usage: lexwend "));
  EXPECT_EQ(help.errors, "");
  const Outcome version = runWithNothing("--version");
  EXPECT_EQ(version.status, 0);
  EXPECT_EQ(version.output, std::string("lexwend ") + LEXWEND_VERSION + "\n");
  EXPECT_EQ(version.errors, "");
}

TEST(ProgramWithNothing, refusesToBeAnAgentInOneSentence) {
  const Outcome outcome = runWithoutHome("--quiet");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.output, "");
  EXPECT_EQ(outcome.errors, "lexwend: no X11 display can be opened; the agent needs one (DISPLAY)\n");
}

TEST(ProgramWithNothing, looksForARunningAgentOnTheBusAndFindsNoBus) {
  const Outcome outcome = runWithoutHome("--fix");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.output, "");
  EXPECT_NE(outcome.errors.find("the session bus or the agent does not answer"), std::string::npos)
      << outcome.errors;
}

}  // namespace
}  // namespace lexwend::tests
