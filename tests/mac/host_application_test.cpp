// SPDX-License-Identifier: MIT
// The process: application, bundle, other instances, login item, defaults, files and dates.
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <sstream>
#include <stdexcept>

#include <gmock/gmock.h>

#include "tests/mac/host_fixture.h"

namespace lexwend::platform::mac {
namespace {

using ::testing::ElementsAre;

struct MacApplicationService : OnMac {
  Application& service = host->application();
};

TEST_F(MacApplicationService, isNoApplicationBeforeItIsAskedTo) {
  EXPECT_FALSE(doubles::app::exists());
  EXPECT_EQ(service.takeSharedApplication(), std::nullopt);
  EXPECT_TRUE(doubles::app::exists());
}

TEST_F(MacApplicationService, hasNoWayToTheAgentThatRuns) {
  RunningInstance& instance = host->runningInstance();
  EXPECT_EQ(instance.pass(InstanceCommand::fix), InstanceAnswer::notHere);
  EXPECT_FALSE(instance.receive([](InstanceCommand) { return true; }));
  EXPECT_FALSE(instance.dropFixes());
}

TEST_F(MacApplicationService, setsThePolicyAndRunsTheDelegateOnceAtTheStartOfTheLoop) {
  std::vector<std::string> order;
  service.takeSharedApplication();
  service.setDelegate([&] { order.push_back("launched"); });
  service.setActivationPolicy(ActivationPolicy::accessory);
  EXPECT_EQ(doubles::app::activationPolicy(), 1);
  EXPECT_TRUE(order.empty());
  doubles::app::setEventLoop([&] { order.push_back("loop"); });
  service.run();
  EXPECT_THAT(order, ElementsAre("launched", "loop"));
}

TEST_F(MacApplicationService, runsTheLoopEvenWhenLaunchingThrows) {
  bool ran = false;
  service.takeSharedApplication();
  service.setDelegate([] { throw std::runtime_error("from the launch"); });
  doubles::app::setEventLoop([&] { ran = true; });
  service.run();
  EXPECT_TRUE(ran);
}

TEST_F(MacApplicationService, leavesNothingOfTheLoopBehind) {
  service.takeSharedApplication();
  service.setDelegate([] {});
  EXPECT_EQ(doubles::liveObjects("LXWApplicationDelegate"), 1u);
  service.run();
  host = nullptr;
  EXPECT_EQ(doubles::liveObjects("LXWApplicationDelegate"), 0u);
}

TEST_F(MacApplicationService, comesToTheFrontBeepsAndTerminates) {
  service.takeSharedApplication();
  doubles::forgetCalls();
  service.activate(true);
  EXPECT_EQ(doubles::app::activations(), 1);
  const auto activations = doubles::callsNamed("-[NSApplication activateIgnoringOtherApps:]");
  ASSERT_EQ(activations.size(), 1u);
  EXPECT_EQ(activations[0].arguments, "true");
  EXPECT_EQ(doubles::app::beeps(), 0);
  service.beep();
  EXPECT_EQ(doubles::app::beeps(), 1);
  EXPECT_FALSE(doubles::app::isTerminated());
  service.terminate();
  EXPECT_TRUE(doubles::app::isTerminated());
}

TEST_F(MacApplicationService, knowsItsBundle) {
  doubles::process::setBundleIdentifier("org.lexwend.Lexwend");
  EXPECT_EQ(service.bundleIdentifier(), "org.lexwend.Lexwend");
  doubles::process::setBundleIdentifier(std::nullopt);
  EXPECT_EQ(service.bundleIdentifier(), std::nullopt);
}

TEST_F(MacApplicationService, readsItsVersionOnlyWhenItIsText) {
  doubles::process::setInfo("CFBundleShortVersionString", std::string("1.0"));
  EXPECT_EQ(service.shortVersionString(), "1.0");
  for (const doubles::Value& value :
       std::vector<doubles::Value>{{}, 1.0, true, std::vector<std::string>{"1.0"}, doubles::NullObject{}}) {
    doubles::process::setInfo("CFBundleShortVersionString", value);
    EXPECT_EQ(service.shortVersionString(), std::nullopt) << value.index();
  }
  doubles::process::infoIsAbsent();
  EXPECT_EQ(service.shortVersionString(), std::nullopt);
}

TEST_F(MacApplicationService, readsItsNameFromTheBundleAndHasOneWithoutIt) {
  doubles::process::setInfo("CFBundleDisplayName", std::string("לקסוונד"));
  EXPECT_EQ(service.displayName(), "לקסוונד");
  doubles::process::setInfo("CFBundleDisplayName", std::int64_t{1});
  EXPECT_EQ(service.displayName(), "Lexwend");
  doubles::process::infoIsAbsent();
  EXPECT_EQ(service.displayName(), "Lexwend");
}

TEST_F(MacApplicationService, listsTheProcessesOfABundleInTheSystemsOrder) {
  doubles::process::setIdentifier(100);
  doubles::workspace::setRunning({{"org.lexwend.Lexwend", 300},
                                  {"com.apple.finder", 50},
                                  {std::nullopt, 51},
                                  {"org.lexwend.Lexwend", 100}});
  RunningApplications& running = host->runningApplications();
  EXPECT_THAT(running.withBundleIdentifier("org.lexwend.Lexwend"), ElementsAre(300, 100));
  EXPECT_THAT(running.withBundleIdentifier("org.lexwend"), ElementsAre());
  EXPECT_EQ(running.ownProcessIdentifier(), 100);
}

struct MacLoginItemService : OnMac {
  LoginItem& service = host->loginItem();
};

TEST_F(MacLoginItemService, reportsEachOfTheFourStates) {
  const LoginItemStatus states[] = {LoginItemStatus::notRegistered, LoginItemStatus::enabled,
                                    LoginItemStatus::requiresApproval, LoginItemStatus::notFound};
  for (const LoginItemStatus state : states) {
    doubles::login_item::setStatus(static_cast<long>(state));
    EXPECT_EQ(service.status(), state);
  }
  doubles::login_item::setStatus(4);
  EXPECT_EQ(service.status(), LoginItemStatus::notFound);
}

TEST_F(MacLoginItemService, registersAndUnregisters) {
  doubles::login_item::setStatus(0);
  EXPECT_TRUE(service.registerItem());
  EXPECT_EQ(doubles::login_item::status(), 1);
  EXPECT_TRUE(service.unregisterItem());
  EXPECT_EQ(doubles::login_item::status(), 0);
  doubles::login_item::registrationNeedsApproval(true);
  EXPECT_TRUE(service.registerItem());
  EXPECT_EQ(service.status(), LoginItemStatus::requiresApproval);
}

TEST_F(MacLoginItemService, tellsARefusal) {
  doubles::login_item::setStatus(0);
  doubles::login_item::failNext(1);
  EXPECT_FALSE(service.registerItem());
  doubles::login_item::setStatus(1);
  doubles::login_item::failNext(1);
  EXPECT_FALSE(service.unregisterItem());
  EXPECT_EQ(doubles::login_item::status(), 1);
}

struct MacDefaults : OnMac {
  UserDefaults& service = host->standardUserDefaults();

  std::optional<DefaultsValue> stored(const doubles::Value& value) {
    doubles::defaults::set("key", value);
    return service.objectForKey("key");
  }
};

TEST_F(MacDefaults, hasNothingUnderAnUnusedKey) {
  EXPECT_EQ(service.objectForKey("key"), std::nullopt);
  EXPECT_FALSE(service.boolForKey("key"));
}

TEST_F(MacDefaults, tellsTruthValuesNumbersTextAndTheRestApart) {
  EXPECT_EQ(stored(true), DefaultsValue(true));
  EXPECT_EQ(stored(false), DefaultsValue(false));
  EXPECT_EQ(stored(std::int64_t{1}), DefaultsValue(std::int64_t{1}));
  EXPECT_EQ(stored(std::int64_t{-1}), DefaultsValue(std::int64_t{-1}));
  EXPECT_EQ(stored(std::numeric_limits<std::int64_t>::max()),
            DefaultsValue(std::numeric_limits<std::int64_t>::max()));
  EXPECT_EQ(stored(std::numeric_limits<std::int64_t>::min()),
            DefaultsValue(std::numeric_limits<std::int64_t>::min()));
  EXPECT_EQ(stored(std::string("120")), DefaultsValue(std::string("120")));
  EXPECT_EQ(stored(doubles::Bytes{}), DefaultsValue(OtherDefaultsValue{}));
  EXPECT_EQ(stored(std::vector<std::string>{"a"}), DefaultsValue(OtherDefaultsValue{}));
}

TEST_F(MacDefaults, takesARealNumberForAWholeOneWhenNothingIsLost) {
  EXPECT_EQ(stored(120.0), DefaultsValue(std::int64_t{120}));
  EXPECT_EQ(stored(-0x1p63), DefaultsValue(std::numeric_limits<std::int64_t>::min()));
  EXPECT_EQ(stored(120.5), DefaultsValue(120.5));
  EXPECT_EQ(stored(0x1p63), DefaultsValue(0x1p63));
  EXPECT_EQ(stored(-0x1p64), DefaultsValue(-0x1p64));
  EXPECT_EQ(stored(std::numeric_limits<double>::infinity()),
            DefaultsValue(std::numeric_limits<double>::infinity()));
  EXPECT_TRUE(std::isnan(std::get<double>(stored(std::numeric_limits<double>::quiet_NaN()).value())));
}

TEST_F(MacDefaults, writesWhatItReads) {
  service.setInteger(4294967295, "hotKeyCode");
  service.setBool(true, "compatMode");
  service.setBool(false, "switchLayoutAfterFix");
  EXPECT_EQ(service.objectForKey("hotKeyCode"), DefaultsValue(std::int64_t{4294967295}));
  EXPECT_EQ(service.objectForKey("compatMode"), DefaultsValue(true));
  EXPECT_EQ(service.objectForKey("switchLayoutAfterFix"), DefaultsValue(false));
  EXPECT_TRUE(service.boolForKey("compatMode"));
  EXPECT_FALSE(service.boolForKey("switchLayoutAfterFix"));
  doubles::defaults::set("number", std::int64_t{2});
  EXPECT_TRUE(service.boolForKey("number"));
}

/// A folder of its own for the files of one test.
struct Folder {
  std::filesystem::path path;
  Folder() {
    std::string name = (std::filesystem::temp_directory_path() / "lexwend-mac-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no folder for the test");
    path = name;
  }
  ~Folder() { std::filesystem::remove_all(path); }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
};

struct MacFilesService : OnMac {
  Folder folder;
  Files& service = host->files();
  std::string file = (folder.path / "Lexwend.log").string();

  std::string contents() const {
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
  }
};

TEST_F(MacFilesService, knowsTheHomeDirectory) {
  doubles::process::setHomeDirectory("/Users/דנה");
  EXPECT_EQ(service.homeDirectoryForCurrentUser(), "/Users/דנה");
}

TEST_F(MacFilesService, opensOnlyAFileThatIsThere) {
  EXPECT_EQ(service.fileHandleForWriting(file), nullptr);
  EXPECT_FALSE(std::filesystem::exists(file));
  EXPECT_EQ(service.fileHandleForWriting("\xFF"), nullptr);
}

TEST_F(MacFilesService, saysThatAPathIsNoFolderInsteadOfAskingTheDisk) {
  service.fileHandleForWriting(file);
  EXPECT_EQ(argumentsOf("+[NSURL fileURLWithPath:isDirectory:]"), file + ", false");
}

TEST_F(MacFilesService, writesAWholeFileAndReplacesIt) {
  EXPECT_TRUE(service.writeWholeFile(file, "first"));
  EXPECT_EQ(contents(), "first");
  EXPECT_THAT(argumentsOf("-[NSData writeToURL:options:error:]"), ::testing::HasSubstr("options=0"));
  EXPECT_TRUE(service.writeWholeFile(file, ""));
  EXPECT_EQ(contents(), "");
  EXPECT_FALSE(service.writeWholeFile((folder.path / "missing" / "file").string(), "text"));
  EXPECT_FALSE(service.writeWholeFile("\xFF", "text"));
}

TEST_F(MacFilesService, appendsAtTheEndWithoutTruncating) {
  service.writeWholeFile(file, "first");
  auto handle = service.fileHandleForWriting(file);
  ASSERT_NE(handle, nullptr);
  doubles::forgetCalls();
  handle->seekToEndOfFile();
  handle->write(" שני");
  EXPECT_TRUE(handle->close());
  const std::vector<doubles::Call> expected = {{"-[NSFileHandle seekToEndOfFile]", ""},
                                               {"-[NSFileHandle writeData:]", "7 bytes"},
                                               {"-[NSFileHandle closeAndReturnError:]", ""}};
  EXPECT_EQ(doubles::calls(), expected);
  EXPECT_EQ(contents(), "first שני");
}

TEST_F(MacFilesService, startsAtTheBeginning) {
  service.writeWholeFile(file, "first");
  auto handle = service.fileHandleForWriting(file);
  handle->write("F");
  handle->close();
  EXPECT_EQ(contents(), "First");
}

struct MacDateFormattersService : OnMac {
  DateFormatters& service = host->dateFormatters();
};

TEST_F(MacDateFormattersService, keepsOneFormatterForEachPattern) {
  DateFormatter& log = service.withPattern("yyyy-MM-dd HH:mm:ss.SSS");
  EXPECT_EQ(&service.withPattern("yyyy-MM-dd HH:mm:ss.SSS"), &log);
  EXPECT_NE(&service.withPattern("yyyy"), &log);
  EXPECT_EQ(&service.withPattern("yyyy-MM-dd HH:mm:ss.SSS"), &log);
  EXPECT_EQ(doubles::callsNamed("-[NSDateFormatter setDateFormat:]").size(), 2u);
}

TEST_F(MacDateFormattersService, rendersThisMomentInTheUsersTimeZone) {
  setenv("TZ", "UTC", 1);
  tzset();
  doubles::time::setWallClock(1709647629.042);
  EXPECT_EQ(service.withPattern("yyyy-MM-dd HH:mm:ss.SSS").stringFromNow(), "2024-03-05 14:07:09.042");
}

}  // namespace
}  // namespace lexwend::platform::mac
