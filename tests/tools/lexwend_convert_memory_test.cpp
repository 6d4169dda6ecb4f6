// SPDX-License-Identifier: MIT
// lexwend-convert with less memory than its input has.
#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "tests/tools/child_process.h"

namespace lexwend {
namespace {

constexpr const char* kLimit = "--data=6000000";  // bytes of writable memory
constexpr std::size_t kSize = 7'200'000;

// How many bytes a file of `part`, so often that it is `kSize` long, becomes under the limit.
std::size_t converted(const std::string& part, const std::string& option = "--") {
  const std::string path = testing::TempDir() + "lexwend-convert-memory-" + std::to_string(getpid());
  {
    std::ofstream file(path, std::ios::binary);
    for (std::size_t written = 0; written < kSize; written += part.size()) file << part;
  }
  const Outcome outcome =
      runProgram("/usr/bin/prlimit",
                 {kLimit, "/bin/sh", "-c", "\"$@\" | wc -c", "sh", LEXWEND_CONVERT, option, path}, "");
  std::filesystem::remove(path);
  EXPECT_EQ(outcome.errors, "");
  return std::stoul("0" + outcome.output);
}

TEST(LexwendConvertWithLittleMemory, convertsAFileOfAnyText) {
  EXPECT_EQ(converted("akuo nv\n"), kSize / 8 * 14);
  EXPECT_EQ(converted("ש"), kSize / 2);
  EXPECT_EQ(converted("היי akuo\tnv\r\n"), kSize / 16 * 22);
  EXPECT_EQ(converted("\u0301"), kSize);
  EXPECT_EQ(converted("01234567"), kSize);
}

TEST(LexwendConvertWithLittleMemory, convertsTheLinesOfAFile) {
  EXPECT_EQ(converted("akuo nv\n", "--lines"), kSize / 8 * 14);
}

}  // namespace
}  // namespace lexwend
