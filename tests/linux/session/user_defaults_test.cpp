// SPDX-License-Identifier: MIT
#include "platform/linux/session/user_defaults.h"

#include <chrono>
#include <functional>
#include <limits>

#include <gtest/gtest.h>

#include "platform/linux/session/user_folders.h"
#include "tests/linux/testing/file_troubles.h"
#include "tests/linux/testing/temporary_folder.h"

namespace lexwend::platform {
namespace {

using namespace std::chrono_literals;

struct UserDefaultsFile : ::testing::Test {
  test::TemporaryFolder folder;
  std::string path = folder.file("lexwend/settings");

  /// A damaged file counts as settled at once.
  LinuxUserDefaults opened() const { return LinuxUserDefaults(path, 0ms); }
  void put(std::string_view bytes) const {
    std::filesystem::create_directories(folder.file("lexwend"));
    test::putContents(path, bytes);
  }
};

TEST_F(UserDefaultsFile, isNotMadeByReading) {
  auto defaults = opened();
  EXPECT_EQ(defaults.objectForKey("hotKeyCode"), std::nullopt);
  EXPECT_FALSE(defaults.boolForKey("didRegisterLoginItem"));
  EXPECT_FALSE(std::filesystem::exists(folder.file("lexwend")));
}

TEST_F(UserDefaultsFile, isAKeyFile) {
  auto defaults = opened();
  defaults.setInteger(120, "hotKeyCode");
  defaults.setBool(true, "compatMode");
  EXPECT_EQ(test::contentsOf(path), "[Settings]\nhotKeyCode=120\ncompatMode=true\n");
}

TEST_F(UserDefaultsFile, isReadableByItsUserAlone) {
  put("[Settings]\n");
  ASSERT_EQ(::chmod(path.c_str(), 0644), 0);
  opened().setInteger(120, "hotKeyCode");
  struct stat state {};
  ASSERT_EQ(::stat(path.c_str(), &state), 0);
  EXPECT_EQ(state.st_mode & 0777U, 0600U);
}

TEST_F(UserDefaultsFile, tellsWhatAValueIsByItsForm) {
  using Value = DefaultsValue;
  put("[Settings]\na= true \nb=True\nc=-9223372036854775808\nd=9223372036854775808\ne=96.5\nf=96.0\n"
      "g=two words\nh=1;2;\nj=\n");
  auto defaults = opened();
  const std::pair<const char*, Value> rows[] = {{"a", true},
                                                {"b", std::string("True")},
                                                {"c", std::numeric_limits<std::int64_t>::min()},
                                                {"d", 9223372036854775808.0},
                                                {"e", 96.5},
                                                {"f", std::int64_t{96}},
                                                {"g", std::string("two words")},
                                                {"h", OtherDefaultsValue{}},
                                                {"j", std::string()}};
  for (const auto& [key, value] : rows) EXPECT_EQ(defaults.objectForKey(key), value) << key;
}

TEST_F(UserDefaultsFile, isKeptAsideWhenItIsDamagedAndCanBeWrittenAgain) {
  put("nonsense");
  auto defaults = opened();
  defaults.setBool(true, "compatMode");
  EXPECT_EQ(test::contentsOf(path + ".damaged"), "nonsense");
  EXPECT_TRUE(opened().boolForKey("compatMode"));
}

TEST_F(UserDefaultsFile, staysWhereItIsWhileAnEditorMayBeWritingIt) {
  put("[Settings]\nhotKeyCode=96\n");
  LinuxUserDefaults defaults(path, 1h);
  EXPECT_EQ(defaults.objectForKey("hotKeyCode"), DefaultsValue(std::int64_t{96}));
  for (const char* unfinished : {"", "[Sett"}) {
    put(unfinished);
    EXPECT_EQ(defaults.objectForKey("hotKeyCode"), DefaultsValue(std::int64_t{96})) << unfinished;
    defaults.setBool(true, "compatMode");
    EXPECT_TRUE(defaults.boolForKey("compatMode"));
    EXPECT_EQ(test::contentsOf(path), unfinished);
    EXPECT_FALSE(std::filesystem::exists(path + ".damaged"));
  }
  put("[Settings]\nhotKeyCode=97\n");
  EXPECT_EQ(defaults.objectForKey("hotKeyCode"), DefaultsValue(std::int64_t{97}));
  EXPECT_EQ(test::contentsOf(path), "[Settings]\nhotKeyCode=97\ncompatMode=true\n");
}

TEST_F(UserDefaultsFile, isDamagedWhenItHoldsANul) {
  const std::string contents = std::string("[Settings]\nlanguage=he") + '\0' + "\ncompatMode=true\n";
  put(contents);
  auto defaults = opened();
  defaults.setBool(true, "switchLayoutAfterFix");
  EXPECT_EQ(test::contentsOf(path + ".damaged"), contents);
}

TEST_F(UserDefaultsFile, isKeptAsideOnlyWhenItHasStayedDamaged) {
  put("nonsense");
  LinuxUserDefaults defaults(path, 50ms);
  EXPECT_EQ(defaults.objectForKey("hotKeyCode"), std::nullopt);
  EXPECT_EQ(test::contentsOf(path), "nonsense");
  for (const auto end = std::chrono::steady_clock::now() + 20s;
       std::filesystem::exists(path) && std::chrono::steady_clock::now() < end;) {
    EXPECT_EQ(defaults.objectForKey("hotKeyCode"), std::nullopt);
  }
  EXPECT_EQ(test::contentsOf(path + ".damaged"), "nonsense");
}

TEST_F(UserDefaultsFile, thatStaysEmptyIsAnEmptyOne) {
  put("");
  auto defaults = opened();
  EXPECT_EQ(defaults.objectForKey("hotKeyCode"), std::nullopt);
  defaults.setInteger(96, "hotKeyCode");
  EXPECT_EQ(test::contentsOf(path), "[Settings]\nhotKeyCode=96\n");
  EXPECT_FALSE(std::filesystem::exists(path + ".damaged"));
}

TEST_F(UserDefaultsFile, keepsWhatItDoesNotKnowWhenItWrites) {
  put("# a remark\n[Settings]\nfuture=1;2;\nhotKeyCode=F2\n\n[Another]\na=b\n");
  opened().setBool(true, "compatMode");
  EXPECT_EQ(opened().objectForKey("future"), DefaultsValue(OtherDefaultsValue{}));
  EXPECT_EQ(opened().objectForKey("hotKeyCode"), DefaultsValue(std::string("F2")));
  const auto once = test::contentsOf(path);
  EXPECT_EQ(once.find("# a remark\n"), 0U) << once;
  EXPECT_NE(once.find("[Another]\na=b\n"), std::string::npos) << once;
  opened().setBool(false, "compatMode");
  opened().setBool(true, "compatMode");
  EXPECT_EQ(test::contentsOf(path), once) << "the file grows with every write";
}

TEST_F(UserDefaultsFile, readsTheSameBehindSeveralCarriageReturns) {
  put("[Settings]\nhotKeyModifiers=Shift\r\r\r\nfuture=\r\r\r\nhotKeyCode=96\r\r\r\nescaped=\\\r\r\nlast="
      "x\\\r\r");
  const auto escaped = opened().objectForKey("escaped");
  const auto last = opened().objectForKey("last");
  for (const bool flag : {true, false, true}) {
    opened().setBool(flag, "compatMode");
    EXPECT_EQ(opened().objectForKey("hotKeyModifiers"), DefaultsValue(std::string("Shift")));
    EXPECT_EQ(opened().objectForKey("future"), DefaultsValue(std::string()));
    EXPECT_EQ(opened().objectForKey("hotKeyCode"), DefaultsValue(std::int64_t{96}));
    EXPECT_EQ(opened().objectForKey("escaped"), escaped);
    EXPECT_EQ(opened().objectForKey("last"), last);
  }
}

TEST_F(UserDefaultsFile, isReadAnewAfterAnEditByHand) {
  auto defaults = opened();
  defaults.setInteger(120, "hotKeyCode");
  put("[Settings]\nhotKeyCode=96\n");
  EXPECT_EQ(defaults.objectForKey("hotKeyCode"), DefaultsValue(std::int64_t{96}));
}

TEST_F(UserDefaultsFile, behindASymbolicLinkIsReplacedWhereItIs) {
  const auto target = folder.file("elsewhere");
  test::putContents(target, "[Settings]\n");
  std::filesystem::create_directories(folder.file("lexwend"));
  std::filesystem::create_symlink(target, path);
  opened().setInteger(96, "hotKeyCode");
  EXPECT_TRUE(std::filesystem::is_symlink(path));
  EXPECT_EQ(test::contentsOf(target), "[Settings]\nhotKeyCode=96\n");
}

TEST_F(UserDefaultsFile, thatCannotBeWrittenStillServesThisRun) {
  test::putContents(folder.file("lexwend"), "a file where the folder should be");
  auto defaults = opened();
  defaults.setInteger(96, "hotKeyCode");
  EXPECT_EQ(defaults.objectForKey("hotKeyCode"), DefaultsValue(std::int64_t{96}));
  EXPECT_EQ(opened().objectForKey("hotKeyCode"), std::nullopt);
}

TEST_F(UserDefaultsFile, thatCannotBeReadIsNotWrittenOver) {
  const std::string kept = "[Settings]\nhotKeyCode=96\n";
  put(kept);
  const test::OrdinaryUser user(folder.path());
  ASSERT_EQ(::chmod(path.c_str(), 0), 0);
  auto defaults = opened();
  defaults.setBool(true, "compatMode");
  EXPECT_TRUE(defaults.boolForKey("compatMode"));
  ASSERT_EQ(::chmod(path.c_str(), 0600), 0);
  EXPECT_EQ(test::contentsOf(path), kept);
  EXPECT_EQ(defaults.objectForKey("hotKeyCode"), DefaultsValue(std::int64_t{96}));
  EXPECT_TRUE(opened().boolForKey("compatMode")) << "what was set meanwhile is written as soon as it can be";
}

TEST_F(UserDefaultsFile, thatIsNoSmallRegularFileIsNeitherReadNorReplaced) {
  std::filesystem::create_directories(folder.file("lexwend"));
  const std::pair<const char*, std::function<void()>> kinds[] = {
      {"FIFO", [&] { ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0); }},
      {"device", [&] { std::filesystem::create_symlink("/dev/zero", path); }},
      {"folder", [&] { std::filesystem::create_directory(path); }},
      {"large file",
       [&] { put("[Settings]\nhotKeyCode=96\n" + std::string(user_folders::kMaxSmallFile, '#')); }}};
  for (const auto& [kind, make] : kinds) {
    make();
    const auto before = std::filesystem::symlink_status(path).type();
    auto defaults = opened();
    EXPECT_EQ(defaults.objectForKey("hotKeyCode"), std::nullopt) << kind;
    defaults.setBool(true, "compatMode");
    EXPECT_TRUE(defaults.boolForKey("compatMode")) << kind;
    EXPECT_EQ(std::filesystem::symlink_status(path).type(), before) << kind;
    std::filesystem::remove_all(path);
  }
}

TEST_F(UserDefaultsFile, withoutAPlaceServesThisRun) {
  LinuxUserDefaults defaults("");
  defaults.setBool(true, "compatMode");
  EXPECT_TRUE(defaults.boolForKey("compatMode"));
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
