// SPDX-License-Identifier: MIT
#include "platform/linux/session/user_defaults.h"

#include <limits>

#include <gtest/gtest.h>

#include "tests/linux/testing/file_troubles.h"
#include "tests/linux/testing/temporary_folder.h"

namespace lexwend::platform {
namespace {

struct UserDefaultsFile : ::testing::Test {
  test::TemporaryFolder folder;
  std::string path = folder.file("lexwend/settings");

  LinuxUserDefaults opened() const { return LinuxUserDefaults(path); }
  void put(std::string_view bytes) const {
    std::filesystem::create_directories(folder.file("lexwend"));
    test::putContents(path, bytes);
  }
};

const DefaultsTable kOfEveryType = {{"flag", true},
                                    {"none", OtherDefaultsValue{}},
                                    {"number", std::int64_t{-12}},
                                    {"real", 0.1},
                                    {"text", std::string("a \"quoted\" \\ line\nand another, \xd7\xa9")}};

TEST_F(UserDefaultsFile, isNotMadeByReading) {
  auto defaults = opened();
  EXPECT_EQ(defaults.objectForKey("hotKeyCode"), std::nullopt);
  EXPECT_FALSE(defaults.boolForKey("didRegisterLoginItem"));
  EXPECT_FALSE(std::filesystem::exists(folder.file("lexwend")));
}

TEST_F(UserDefaultsFile, isTypedText) {
  opened().setInteger(120, "hotKeyCode");
  EXPECT_EQ(test::contentsOf(path), "# Lexwend settings\nhotKeyCode = integer 120\nend\n");
}

TEST_F(UserDefaultsFile, isReadableByItsUserAlone) {
  opened().setInteger(120, "hotKeyCode");
  struct stat state {};
  ASSERT_EQ(::stat(path.c_str(), &state), 0);
  EXPECT_EQ(state.st_mode & 0777U, 0600U);
}

TEST_F(UserDefaultsFile, survivesAWriteThatACrashCutOffAtAnyByte) {
  opened().setInteger(120, "hotKeyCode");
  const std::string next = "# Lexwend settings\nhotKeyCode = integer 98\nend\n";
  for (std::size_t length = 0; length <= next.size(); ++length) {
    test::putContents(path + ".new", next.substr(0, length));
    EXPECT_EQ(opened().objectForKey("hotKeyCode"), DefaultsValue(std::int64_t{120})) << length;
  }
  auto defaults = opened();
  defaults.setInteger(99, "hotKeyCode");
  EXPECT_EQ(opened().objectForKey("hotKeyCode"), DefaultsValue(std::int64_t{99}));
  EXPECT_FALSE(std::filesystem::exists(path + ".new"));
}

TEST_F(UserDefaultsFile, isWholeOrKeptAsideWhereverItIsCutOff) {
  const auto whole = defaultsText(kOfEveryType);
  for (std::size_t length = 0; length < whole.size(); ++length) {
    put(whole.substr(0, length));
    auto defaults = opened();
    const bool lostOnlyTheLastLineFeed = length + 1 == whole.size();
    for (const auto& [key, value] : kOfEveryType) {
      const auto read = defaults.objectForKey(key);
      EXPECT_EQ(read.has_value(), lostOnlyTheLastLineFeed) << key << " at " << length;
      EXPECT_TRUE(!read || *read == value) << key;
    }
    EXPECT_EQ(std::filesystem::exists(path), lostOnlyTheLastLineFeed) << length;
    if (!lostOnlyTheLastLineFeed) {
      EXPECT_EQ(test::contentsOf(path + ".damaged"), whole.substr(0, length));
    }
  }
}

TEST_F(UserDefaultsFile, canBeWrittenAfterADamagedOneWasKeptAside) {
  put("nonsense");
  auto defaults = opened();
  defaults.setBool(true, "compatMode");
  EXPECT_EQ(test::contentsOf(path + ".damaged"), "nonsense");
  EXPECT_TRUE(opened().boolForKey("compatMode"));
}

TEST_F(UserDefaultsFile, keepsWhatItDoesNotKnowWhenItWrites) {
  put("# Lexwend settings\n# a remark\n\nfuture = other\nhotKeyCode = string \"F2\"\nend\n");
  auto defaults = opened();
  EXPECT_EQ(defaults.objectForKey("hotKeyCode"), DefaultsValue(std::string("F2")));
  defaults.setBool(true, "compatMode");
  EXPECT_EQ(opened().objectForKey("future"), DefaultsValue(OtherDefaultsValue{}));
  EXPECT_EQ(opened().objectForKey("hotKeyCode"), DefaultsValue(std::string("F2")));
}

TEST_F(UserDefaultsFile, isReadAnewAfterAnEditByHand) {
  auto defaults = opened();
  defaults.setInteger(120, "hotKeyCode");
  put("# Lexwend settings\nhotKeyCode = integer 96\nend\n");
  EXPECT_EQ(defaults.objectForKey("hotKeyCode"), DefaultsValue(std::int64_t{96}));
}

TEST_F(UserDefaultsFile, behindASymbolicLinkIsReplacedWhereItIs) {
  const auto target = folder.file("elsewhere");
  test::putContents(target, "# Lexwend settings\nend\n");
  std::filesystem::create_directories(folder.file("lexwend"));
  std::filesystem::create_symlink(target, path);
  opened().setInteger(96, "hotKeyCode");
  EXPECT_TRUE(std::filesystem::is_symlink(path));
  EXPECT_EQ(test::contentsOf(target), "# Lexwend settings\nhotKeyCode = integer 96\nend\n");
}

TEST_F(UserDefaultsFile, thatCannotBeWrittenStillServesThisRun) {
  test::putContents(folder.file("lexwend"), "a file where the folder should be");
  auto defaults = opened();
  defaults.setInteger(96, "hotKeyCode");
  EXPECT_EQ(defaults.objectForKey("hotKeyCode"), DefaultsValue(std::int64_t{96}));
  EXPECT_EQ(opened().objectForKey("hotKeyCode"), std::nullopt);
}

TEST_F(UserDefaultsFile, thatCannotBeReadIsNotWrittenOver) {
  const std::string kept = "# Lexwend settings\nhotKeyCode = integer 96\nend\n";
  put(kept);
  const test::OrdinaryUser user(folder.path());
  ASSERT_EQ(::chmod(path.c_str(), 0), 0);
  auto defaults = opened();
  defaults.setBool(true, "compatMode");
  EXPECT_TRUE(defaults.boolForKey("compatMode"));
  ASSERT_EQ(::chmod(path.c_str(), 0600), 0);
  EXPECT_EQ(test::contentsOf(path), kept);
  EXPECT_EQ(defaults.objectForKey("hotKeyCode"), DefaultsValue(std::int64_t{96}));
  defaults.setBool(true, "compatMode");
  EXPECT_EQ(opened().objectForKey("hotKeyCode"), DefaultsValue(std::int64_t{96}));
  EXPECT_TRUE(opened().boolForKey("compatMode"));
}

TEST_F(UserDefaultsFile, withoutAPlaceServesThisRun) {
  LinuxUserDefaults defaults("");
  defaults.setBool(true, "compatMode");
  EXPECT_TRUE(defaults.boolForKey("compatMode"));
}

TEST(UserDefaultsText, comesBackAsItWas) {
  EXPECT_EQ(parseDefaults(defaultsText(kOfEveryType)), kOfEveryType);
  const DefaultsTable limits = {{"a", std::numeric_limits<std::int64_t>::min()},
                                {"b", std::numeric_limits<std::int64_t>::max()}};
  EXPECT_EQ(parseDefaults(defaultsText(limits)), limits);
}

TEST(UserDefaultsText, givesAWholeNumberInRangeAsAnInteger) {
  EXPECT_EQ(parseDefaults("# Lexwend settings\na = real 96\nb = real -9223372036854775808\n"
                          "c = real 9223372036854775808\nd = real 96.5\nend\n"),
            (DefaultsTable{{"a", std::int64_t{96}},
                           {"b", std::numeric_limits<std::int64_t>::min()},
                           {"c", 9223372036854775808.0},
                           {"d", 96.5}}));
}

TEST(UserDefaultsText, isRefusedWhenAnEntryIsNone) {
  for (const auto* entry : {"hotKeyCode", "= integer 1", "k = integer", "k = integer 1x",
                            "k = integer 9223372036854775808", "k = real ,5", "k = boolean yes",
                            "k = string open", "k = string \"a\"b\"", "k = string \"\\\"", "k = data 00"}) {
    EXPECT_EQ(parseDefaults("# Lexwend settings\n" + std::string(entry) + "\nend\n"), std::nullopt) << entry;
  }
}

TEST(UserDefaultsPath, isInTheConfigFolder) {
  const test::EnvironmentVariable config("XDG_CONFIG_HOME", "/somewhere/config");
  EXPECT_EQ(LinuxUserDefaults::standardPath(), "/somewhere/config/lexwend/settings");
}

TEST(UserDefaultsPath, isUnderTheHomeFolderWhenTheConfigFolderIsRelativeOrNotSet) {
  const test::EnvironmentVariable home("HOME", "/home/someone");
  for (const char* value : {static_cast<const char*>(nullptr), "", "relative"}) {
    const test::EnvironmentVariable config("XDG_CONFIG_HOME", value);
    EXPECT_EQ(LinuxUserDefaults::standardPath(), "/home/someone/.config/lexwend/settings");
  }
}

}  // namespace
}  // namespace lexwend::platform
