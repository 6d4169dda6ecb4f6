// SPDX-License-Identifier: MIT
#include "platform/linux/session/foreign_text.h"

#include <gtest/gtest.h>

#include "platform/linux/session/workspace.h"

namespace lexwend::platform {
namespace {

std::string repeated(std::string_view text, int times) {
  std::string all;
  for (int i = 0; i < times; ++i) all += text;
  return all;
}

TEST(ForeignText, isLeftAsItIsWhereItIsHarmless) {
  EXPECT_EQ(foreignText(""), "");
  EXPECT_EQ(foreignText("Mousepad - שלום 👍"), "Mousepad - שלום 👍");
}

TEST(ForeignText, hasNoLineFeedsAndNoEscapeSequences) {
  EXPECT_EQ(foreignText("a\n2026-01-01 00:00:00.000 fix: success\r\x1b[31mb\x7f\t\xc2\x9b"),
            "a2026-01-01 00:00:00.000 fix: success[31mb");
  EXPECT_EQ(foreignText("a\u2028b\u2029c\u202ed\u200be\u0085f"), "abcdef");
  EXPECT_EQ(foreignText(std::string_view("a\0b", 3)), "ab");
}

TEST(ForeignText, isWellFormed) {
  EXPECT_EQ(foreignText("a\xff\xc3z"), "a\uFFFD\uFFFDz");
}

TEST(ForeignText, isCutAt200Characters) {
  EXPECT_EQ(foreignText(repeated("ש", 200)), repeated("ש", 200));
  EXPECT_EQ(foreignText(repeated("ש", 201)), repeated("ש", 200));
  EXPECT_EQ(foreignText(repeated("\n", 1000) + "a"), "a");
}

TEST(FrontmostApplication, isNamedInForeignText) {
  LinuxWorkspace workspace([] { return "XTerm\n2026-01-01 00:00:00.000 fix: success"; });
  EXPECT_EQ(workspace.frontmostApplication().value_or(FrontApplication{}).bundleIdentifier,
            "XTerm2026-01-01 00:00:00.000 fix: success");
}

}  // namespace
}  // namespace lexwend::platform
