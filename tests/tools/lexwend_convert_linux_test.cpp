// SPDX-License-Identifier: MIT
// lexwend-convert as a process, where only Linux lets a test bring the situation about.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/tools/child_process.h"

namespace lexwend {
namespace {

TEST(LexwendConvert, failsWithAMessageOnAFullDevice) {
  ChildProcess::Streams streams;
  streams.outputFile = "/dev/full";
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{}, {"--lines"}, {"--null"}, {"--help"}, {"--version"}}) {
    const Outcome outcome = runProgram(LEXWEND_CONVERT, arguments, "akuo", streams);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.errors, "lexwend-convert: write error: No space left on device\n");
  }
}

// The layouts are those of the display; macOS always has its own.
TEST(LexwendConvert, failsClearlyWhereTheSystemHasNoLayouts) {
  unsetenv("DISPLAY");
  unsetenv("WAYLAND_DISPLAY");
  const Outcome outcome = runProgram(LEXWEND_CONVERT, {"--map", "system"}, "akuo", {});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.output, "");
  EXPECT_EQ(outcome.errors, "lexwend-convert: no enabled Hebrew and English layouts found\n");
}

}  // namespace
}  // namespace lexwend
