// SPDX-License-Identifier: MIT
#include "tools/input.h"

#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

namespace lexwend {
namespace {

struct InputOfAFile : testing::Test {
  std::string path =
      testing::TempDir() + "lexwend-input-" + testing::UnitTest::GetInstance()->current_test_info()->name();

  InputOfAFile() { std::ofstream(path) << "akuo nv"; }
  ~InputOfAFile() override { std::filesystem::remove(path); }
};

std::string whole(Input& input) {
  ByteBuffer buffer;
  while (input.read(buffer)) {
  }
  return std::string(buffer.bytes());
}

TEST_F(InputOfAFile, isReadTwice) {
  Input input({path, path});
  EXPECT_TRUE(input.canBeReadAgain());
  EXPECT_EQ(whole(input), "akuo nvakuo nv");
  input.readAgain();
  EXPECT_EQ(whole(input), "akuo nvakuo nv");
}

TEST_F(InputOfAFile, endsTheSecondTimeWhereItEndedTheFirstTime) {
  Input input({path});
  EXPECT_EQ(whole(input), "akuo nv");
  std::ofstream(path, std::ios::app) << " akunl";
  input.readAgain();
  EXPECT_EQ(whole(input), "akuo nv");
}

TEST_F(InputOfAFile, failsWhenItHasBecomeShorter) {
  Input input({path});
  EXPECT_EQ(whole(input), "akuo nv");
  std::filesystem::resize_file(path, 4);
  input.readAgain();
  try {
    whole(input);
    FAIL() << "what is missing was not noticed";
  } catch (const ReadError& error) {
    EXPECT_EQ(error.file, path);
    EXPECT_EQ(error.reason, "became shorter while it was read");
  }
}

TEST_F(InputOfAFile, isNotReadTwiceBesideWhatIsNoFile) {
  EXPECT_FALSE(Input({path, "/dev/null"}).canBeReadAgain());
  EXPECT_FALSE(Input({path, path + ".missing"}).canBeReadAgain());
}

TEST(ByteBuffer, keepsWhatIsNotUsedUp) {
  ByteBuffer buffer;
  std::string expected;
  for (int round = 0; round < 100; ++round) {
    const std::string added(1 + static_cast<std::size_t>(round) * 7 % 50,
                            static_cast<char>('a' + round % 26));
    added.copy(buffer.room(added.size()), added.size());
    buffer.add(added.size());
    buffer.drop(10 < buffer.bytes().size() ? 10 : 0);
    expected = (expected + added).substr(10 < expected.size() + added.size() ? 10 : 0);
    ASSERT_EQ(buffer.bytes(), expected);
  }
}

}  // namespace
}  // namespace lexwend
