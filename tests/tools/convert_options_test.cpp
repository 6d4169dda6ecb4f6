// SPDX-License-Identifier: MIT
#include "tools/convert_options.h"

#include <string>
#include <variant>
#include <vector>

#include <gtest/gtest.h>

namespace lexwend {
namespace {

ConvertOptions parsed(const std::vector<std::string>& arguments) {
  const auto result = parseConvertArguments(arguments);
  const auto* options = std::get_if<ConvertOptions>(&result);
  EXPECT_NE(options, nullptr);
  return options != nullptr ? *options : ConvertOptions{};
}

std::string errorOf(const std::vector<std::string>& arguments) {
  const auto result = parseConvertArguments(arguments);
  const auto* error = std::get_if<ConvertUsageError>(&result);
  return error != nullptr ? error->message : "no error";
}

TEST(ConvertOptions, defaultToTheWholeOfStandardInputAndTheBuiltInTable) {
  const ConvertOptions options = parsed({});
  EXPECT_FALSE(options.currentLayoutIsHebrew);
  EXPECT_EQ(options.map, ConvertOptions::Map::builtIn);
  EXPECT_EQ(options.records, ConvertOptions::Records::wholeInput);
  EXPECT_FALSE(options.report);
  EXPECT_TRUE(options.files.empty());
}

TEST(ConvertOptions, takeValuesAsNextArgumentOrBehindAnEqualsSign) {
  EXPECT_TRUE(parsed({"--layout", "he"}).currentLayoutIsHebrew);
  EXPECT_TRUE(parsed({"--layout=he"}).currentLayoutIsHebrew);
  EXPECT_EQ(parsed({"--map", "system"}).map, ConvertOptions::Map::system);
  EXPECT_EQ(parsed({"--map=system"}).map, ConvertOptions::Map::system);
}

TEST(ConvertOptions, letTheLastOfOneOptionCount) {
  EXPECT_FALSE(parsed({"--layout", "he", "--layout", "en"}).currentLayoutIsHebrew);
  EXPECT_EQ(parsed({"--map", "system", "--map", "builtin"}).map, ConvertOptions::Map::builtIn);
}

TEST(ConvertOptions, standAmongTheFiles) {
  const ConvertOptions options = parsed({"a", "--lines", "-", "--report", "b"});
  EXPECT_EQ(options.files, (std::vector<std::string>{"a", "-", "b"}));
  EXPECT_EQ(options.records, ConvertOptions::Records::lines);
  EXPECT_TRUE(options.report);
}

TEST(ConvertOptions, endAtTwoHyphens) {
  EXPECT_EQ(parsed({"--null", "--", "--lines", "--help", "--"}).files,
            (std::vector<std::string>{"--lines", "--help", "--"}));
}

TEST(ConvertOptions, serveHelpAndVersionFirst) {
  EXPECT_EQ(std::get<ConvertNotice>(parseConvertArguments({"--nonsense", "--help", "--version"})),
            ConvertNotice::help);
  EXPECT_EQ(std::get<ConvertNotice>(parseConvertArguments({"file", "--version"})), ConvertNotice::version);
}

TEST(ConvertOptions, sayWhatIsWrong) {
  EXPECT_EQ(errorOf({"--layout"}), "option --layout needs a value");
  EXPECT_EQ(errorOf({"--layout", "fr"}), "\"fr\" is no value for --layout");
  EXPECT_EQ(errorOf({"--map="}), "\"\" is no value for --map");
  EXPECT_EQ(errorOf({"--lines=yes"}), "option --lines takes no value");
  EXPECT_EQ(errorOf({"--lines", "--null"}), "--lines and --null exclude each other");
  EXPECT_EQ(errorOf({"--null", "--lines"}), "--lines and --null exclude each other");
  EXPECT_EQ(errorOf({"-l"}), "unknown option -l");
  EXPECT_EQ(errorOf({"--Lines"}), "unknown option --Lines");
  EXPECT_EQ(errorOf({"--lines", "--lines"}), "no error");
}

}  // namespace
}  // namespace lexwend
