// SPDX-License-Identifier: MIT
#include "platform/linux/session/date_formatter.h"

#include <ctime>
#include <regex>

#include <gtest/gtest.h>

namespace lexwend::platform {
namespace {

constexpr char kLogPattern[] = "yyyy-MM-dd HH:mm:ss.SSS";

TEST(DateFormatters, renderTheLocalTimeToTheMillisecond) {
  LinuxDateFormatters formatters;
  const std::time_t before = std::time(nullptr);
  const auto text = formatters.withPattern(kLogPattern).stringFromNow();
  ASSERT_TRUE(std::regex_match(text, std::regex(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3})"))) << text;
  std::tm fields{};
  ASSERT_NE(::strptime(text.c_str(), "%Y-%m-%d %H:%M:%S", &fields), nullptr);
  fields.tm_isdst = -1;
  const std::time_t rendered = std::mktime(&fields);
  EXPECT_GE(rendered, before);
  EXPECT_LE(rendered, std::time(nullptr));
}

TEST(DateFormatters, keepOneFormatterForEachPattern) {
  LinuxDateFormatters formatters;
  auto& first = formatters.withPattern(kLogPattern);
  auto& year = formatters.withPattern("yyyy");
  EXPECT_EQ(&formatters.withPattern(kLogPattern), &first);
  EXPECT_NE(&year, &first);
  EXPECT_EQ(year.stringFromNow().size(), 4U);
}

}  // namespace
}  // namespace lexwend::platform
