// SPDX-License-Identifier: MIT
#include "platform/linux/display/latin1.h"

#include <gtest/gtest.h>

namespace lexwend::platform {
namespace {

TEST(Latin1, isConvertedBothWaysWhereItCanBe) {
  std::string all;
  for (int c = 0; c < 256; ++c) all.push_back(static_cast<char>(c));
  EXPECT_EQ(latin1FromUtf8(utf8FromLatin1(all)), all);
  EXPECT_EQ(utf8FromLatin1("caf\xE9"), "caf\u00E9");
  for (const char* notLatin1 : {"\u05E9", "\u20AC", "\xC3", "\xE9", "\xC3\x28", "\xC0\x80"}) {
    EXPECT_EQ(latin1FromUtf8(notLatin1), std::nullopt);
  }
}

}  // namespace
}  // namespace lexwend::platform
