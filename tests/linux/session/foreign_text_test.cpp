// SPDX-License-Identifier: MIT
#include "platform/linux/session/foreign_text.h"

#include <gtest/gtest.h>

namespace lexwend::platform {
namespace {

TEST(ForeignText, staysAsItIsWhereItSpoilsNoLine) {
  for (const char* text : {"", "text", "ערך טקסט", "a\U0001F600b", "e\u0301"})
    EXPECT_EQ(foreignText(text), text);
}

TEST(ForeignText, losesWhatWouldForgeALine) {
  EXPECT_EQ(foreignText("a\n2026-01-01 fix: success\r\t\x1b[31mb"), "a2026-01-01 fix: success[31mb");
  EXPECT_EQ(foreignText("a\u0085\u2028\u2029\u202E\x7f"
                        "b"),
            "ab");
  EXPECT_EQ(foreignText(std::string_view("a\0b", 3)), "ab");
}

TEST(ForeignText, isCutAtTwoHundredCharacters) {
  std::string faces;
  for (int i = 0; i < 5000; ++i) faces += "\U0001F600";
  EXPECT_EQ(foreignText(faces).size(), 4U * 200U);
  EXPECT_EQ(foreignText(std::string(200, 'x')).size(), 200U);
}

TEST(ForeignText, isValidWhereItsBytesAreNot) {
  EXPECT_EQ(foreignText("a\xff"
                        "b\xc3"),
            "a\uFFFDb\uFFFD");
}

}  // namespace
}  // namespace lexwend::platform
