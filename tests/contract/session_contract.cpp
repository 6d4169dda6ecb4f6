// SPDX-License-Identifier: MIT
// What surrounds the program: the user's session, who else runs, stored values, the login item, files, the
// date, and the program itself as an application.
#include <cctype>

#include "platform/application.h"
#include "platform/date_formatter.h"
#include "platform/files.h"
#include "platform/login_item.h"
#include "platform/recorder_window.h"
#include "platform/run_loop.h"
#include "platform/running_applications.h"
#include "platform/user_defaults.h"
#include "platform/workspace.h"
#include "tests/contract/contract_test.h"

namespace lexwend::contract {
namespace {

class WorkspaceContract : public ContractTest {};

TEST_F(WorkspaceContract, theEditorInFrontIsTheFrontmostApplication) {
  EXPECT_EQ(host().workspace().frontmostApplication(), std::nullopt);
  underTest->openEditor("akuo");
  EXPECT_TRUE(underTest->waitUntil([&] {
    const auto front = host().workspace().frontmostApplication();
    return front && front->bundleIdentifier && !front->bundleIdentifier->empty();
  }));
}

TEST_F(WorkspaceContract, whatIsNoUrlGivesNone) {
  auto& workspace = host().workspace();
  EXPECT_EQ(workspace.urlFromString(""), nullptr);
  EXPECT_NE(workspace.urlFromString(
                "x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility"),
            nullptr);
}

TEST_F(WorkspaceContract, aUrlIsOpenedByTheProgramForItsScheme) {
  auto& workspace = host().workspace();
  const std::string text = "lexwend-contract:pane?a=1&b=%20";
  const auto url = workspace.urlFromString(text);
  ASSERT_NE(url, nullptr);
  EXPECT_TRUE(underTest->openedUrls().empty());
  workspace.open(url);
  EXPECT_TRUE(underTest->waitUntil([&] { return !underTest->openedUrls().empty(); }));
  EXPECT_EQ(underTest->openedUrls(), std::vector<std::string>{text});
}

TEST_F(WorkspaceContract, observersHearOfEveryWake) {
  int wakes = 0;
  const auto observer = host().workspace().observeDidWake([&] { ++wakes; });
  underTest->wakeFromSleep();
  EXPECT_TRUE(underTest->waitUntil([&] { return wakes == 1; }));
  underTest->wakeFromSleep();
  EXPECT_TRUE(underTest->waitUntil([&] { return wakes == 2; }));
  underTest->waitUntil([] { return false; }, 50ms);
  EXPECT_EQ(wakes, 2) << "falling asleep is no wake";
}

class RunningApplicationsContract : public ContractTest {};

TEST_F(RunningApplicationsContract, nobodyElseRunsUnderAFreshIdentifier) {
  auto& running = host().runningApplications();
  for (const auto process : running.withBundleIdentifier("org.lexwend.contract")) {
    EXPECT_EQ(process, running.ownProcessIdentifier());
  }
  EXPECT_GT(running.ownProcessIdentifier(), 0);
}

class UserDefaultsContract : public ContractTest {
 protected:
  platform::UserDefaults& defaults() { return host().standardUserDefaults(); }
};

TEST_F(UserDefaultsContract, aKeyThatWasNeverSetHasNoObjectAndIsFalse) {
  EXPECT_EQ(defaults().objectForKey("contractNowhere"), std::nullopt);
  EXPECT_FALSE(defaults().boolForKey("contractNowhere"));
}

TEST_F(UserDefaultsContract, integersComeBackAsIntegers) {
  for (const std::int64_t value :
       {std::int64_t{0}, std::int64_t{120}, std::int64_t{4294967295}, std::int64_t{-1}}) {
    defaults().setInteger(value, "contractNumber");
    EXPECT_EQ(defaults().objectForKey("contractNumber"), platform::DefaultsValue(value));
    EXPECT_EQ(defaults().boolForKey("contractNumber"), value != 0);
  }
}

TEST_F(UserDefaultsContract, truthValuesComeBackAsTruthValues) {
  for (const bool value : {true, false}) {
    defaults().setBool(value, "contractTruth");
    EXPECT_EQ(defaults().objectForKey("contractTruth"), platform::DefaultsValue(value));
    EXPECT_EQ(defaults().boolForKey("contractTruth"), value);
  }
}

TEST_F(UserDefaultsContract, aWriteReplacesTheValueAndItsKindAndLeavesOthersAlone) {
  defaults().setInteger(7, "contractOne");
  defaults().setInteger(8, "contractTwo");
  defaults().setBool(true, "contractOne");
  EXPECT_EQ(defaults().objectForKey("contractOne"), platform::DefaultsValue(true));
  EXPECT_EQ(defaults().objectForKey("contractTwo"), platform::DefaultsValue(std::int64_t{8}));
}

TEST_F(UserDefaultsContract, valuesAreKeptOverRuns) {
  defaults().setInteger(4294967295, "contractNumber");
  defaults().setBool(false, "contractTruth");
  underTest->restart();
  EXPECT_EQ(defaults().objectForKey("contractNumber"), platform::DefaultsValue(std::int64_t{4294967295}));
  EXPECT_EQ(defaults().objectForKey("contractTruth"), platform::DefaultsValue(false));
}

TEST_F(UserDefaultsContract, whatSomebodyElseStoredIsReadByItsKind) {
  using Value = platform::DefaultsValue;
  struct Row {
    Value stored, read;
    bool truth;
  };
  constexpr double kBeyondIntegers = 1e19;
  const Row rows[] = {{true, true, true},
                      {std::int64_t{-3}, std::int64_t{-3}, true},
                      {120.0, std::int64_t{120}, true},
                      {-0.0, std::int64_t{0}, false},
                      {0.5, 0.5, true},
                      {kBeyondIntegers, kBeyondIntegers, true},
                      {std::string("F2 \"ש\""), std::string("F2 \"ש\""), false},
                      {platform::OtherDefaultsValue{}, platform::OtherDefaultsValue{}, false}};
  for (const auto& row : rows) {
    underTest->storeDefault("contractStored", row.stored);
    EXPECT_EQ(defaults().objectForKey("contractStored"), row.read) << row.stored.index();
    EXPECT_EQ(defaults().boolForKey("contractStored"), row.truth) << row.stored.index();
  }
}

class LoginItemContract : public ContractTest {};

TEST_F(LoginItemContract, registeringAndUnregisteringShowInTheStatus) {
  using Status = platform::LoginItemStatus;
  auto& item = host().loginItem();
  EXPECT_NE(item.status(), Status::enabled);
  EXPECT_TRUE(item.registerItem());
  EXPECT_TRUE(item.status() == Status::enabled || item.status() == Status::requiresApproval);
  EXPECT_TRUE(item.unregisterItem());
  EXPECT_EQ(item.status(), Status::notRegistered);
}

class FilesContract : public ContractTest {
 protected:
  using Trouble = HostUnderTest::FileTrouble;
  platform::Files& files() { return host().files(); }
  const std::string path = underTest->writableFolder() + "/contract.log";
};

TEST_F(FilesContract, theHomeDirectoryIsAbsoluteAndStaysTheSame) {
  const auto home = files().homeDirectoryForCurrentUser();
  ASSERT_FALSE(home.empty());
  EXPECT_EQ(home.front(), '/');
  EXPECT_EQ(files().homeDirectoryForCurrentUser(), home);
}

TEST_F(FilesContract, aFileThatDoesNotExistCannotBeOpened) {
  EXPECT_EQ(files().fileHandleForWriting(path), nullptr);
  EXPECT_EQ(underTest->fileBytes(path), std::nullopt) << "opening must not create it";
}

TEST_F(FilesContract, aWholeFileIsCreatedAndReplaced) {
  EXPECT_TRUE(files().writeWholeFile(path, "a long first content\n"));
  EXPECT_EQ(underTest->fileBytes(path), "a long first content\n");
  EXPECT_TRUE(files().writeWholeFile(path, "שני"));
  EXPECT_EQ(underTest->fileBytes(path), "שני");
}

TEST_F(FilesContract, aHandleStartsAtTheBeginningAndDoesNotTruncate) {
  ASSERT_TRUE(files().writeWholeFile(path, "abcdef"));
  const auto handle = files().fileHandleForWriting(path);
  ASSERT_NE(handle, nullptr);
  handle->write("XY");
  EXPECT_TRUE(handle->close());
  EXPECT_EQ(underTest->fileBytes(path), "XYcdef");
}

TEST_F(FilesContract, afterSeekingToTheEndBytesAreAppended) {
  ASSERT_TRUE(files().writeWholeFile(path, "no line feed"));
  const auto handle = files().fileHandleForWriting(path);
  ASSERT_NE(handle, nullptr);
  handle->seekToEndOfFile();
  handle->write(" one\n");
  handle->write("two\n");
  EXPECT_TRUE(handle->close());
  EXPECT_EQ(underTest->fileBytes(path), "no line feed one\ntwo\n");
}

TEST_F(FilesContract, aMissingFolderIsNeverCreated) {
  const std::string lost = underTest->writableFolder() + "/missing/contract.log";
  EXPECT_FALSE(files().writeWholeFile(lost, "x"));
  EXPECT_EQ(files().fileHandleForWriting(lost), nullptr);
  EXPECT_EQ(underTest->fileBytes(lost), std::nullopt);
}

TEST_F(FilesContract, aReadOnlyFileIsNeitherOpenedNorReplaced) {
  ASSERT_TRUE(files().writeWholeFile(path, "kept"));
  underTest->causeTrouble(path, Trouble::readOnly);
  EXPECT_EQ(files().fileHandleForWriting(path), nullptr);
  EXPECT_FALSE(files().writeWholeFile(path, "new"));
  EXPECT_EQ(underTest->fileBytes(path), "kept");
}

TEST_F(FilesContract, aWriteThatTheDiskRefusesIsGivenUpSilently) {
  ASSERT_TRUE(files().writeWholeFile(path, "kept"));
  underTest->causeTrouble(path, Trouble::diskFull);
  const auto handle = files().fileHandleForWriting(path);
  ASSERT_NE(handle, nullptr);
  handle->seekToEndOfFile();
  EXPECT_NO_THROW(handle->write(" and lost"));
  EXPECT_TRUE(handle->close());
  EXPECT_EQ(underTest->fileBytes(path), "kept");
}

TEST_F(FilesContract, aCloseThatTheSystemReportsAsAnErrorIsFalse) {
  ASSERT_TRUE(files().writeWholeFile(path, ""));
  const auto handle = files().fileHandleForWriting(path);
  ASSERT_NE(handle, nullptr);
  underTest->causeTrouble(path, Trouble::closeFails);
  EXPECT_FALSE(handle->close());
}

class DateFormatterContract : public ContractTest {};

TEST_F(DateFormatterContract, aPatternIsRenderedDigitByDigit) {
  const std::string text = host().dateFormatters().withPattern("yyyy-MM-dd HH:mm:ss.SSS").stringFromNow();
  const std::string shape = "dddd-dd-dd dd:dd:dd.ddd";
  ASSERT_EQ(text.size(), shape.size()) << text;
  for (std::size_t i = 0; i < shape.size(); ++i) {
    if (shape[i] == 'd') {
      EXPECT_NE(std::isdigit(static_cast<unsigned char>(text[i])), 0) << text;
    } else {
      EXPECT_EQ(text[i], shape[i]) << text;
    }
  }
}

TEST_F(DateFormatterContract, theSamePatternGivesTheSameFormatter) {
  auto& formatters = host().dateFormatters();
  EXPECT_EQ(&formatters.withPattern("yyyy-MM-dd"), &formatters.withPattern("yyyy-MM-dd"));
  EXPECT_NE(&formatters.withPattern("yyyy-MM-dd"), &formatters.withPattern("HH:mm"));
}

TEST_F(DateFormatterContract, timeGoesOn) {
  auto& formatter = host().dateFormatters().withPattern("yyyy-MM-dd HH:mm:ss.SSS");
  const auto before = formatter.stringFromNow();
  EXPECT_TRUE(underTest->waitUntil([&] { return formatter.stringFromNow() > before; }, 2s));
}

/// What an executable without a bundle answers is shown in tests/mac/, since elsewhere there is none without.
class ApplicationContract : public ContractTest {
 protected:
  platform::Application& application() { return host().application(); }
};

TEST_F(ApplicationContract, knowsItsIdentifierNameAndVersion) {
  EXPECT_EQ(application().bundleIdentifier(), "org.lexwend.Lexwend");
  EXPECT_EQ(application().displayName(), "Lexwend");
  const auto version = application().shortVersionString().value_or("none");
  EXPECT_NE(std::isdigit(static_cast<unsigned char>(version.front())), 0) << version;
}

TEST_F(ApplicationContract, canBeTakenAgain) {
  EXPECT_EQ(application().takeSharedApplication(), std::nullopt);
}

TEST_F(ApplicationContract, launchesOnceAtTheStartOfItsLoopAndRunsUntilItIsTerminated) {
  std::string events;
  application().setDelegate([&] {
    events += "launched";
    host().runLoop().dispatchAfter(20ms, [&] {
      events += ", terminated";
      application().terminate();
    });
  });
  EXPECT_EQ(events, "");
  application().run();
  events += ", returned";
  EXPECT_EQ(events, "launched, terminated, returned");
}

TEST_F(ApplicationContract, mayBeTerminatedWhileItLaunches) {
  int launches = 0;
  application().setDelegate([&] {
    ++launches;
    application().terminate();
  });
  application().run();
  EXPECT_EQ(launches, 1);
}

TEST_F(ApplicationContract, activatingBringsItToTheFront) {
  platform::RecorderWindowLook look;
  look.contentRect = {0, 0, 400, 210};
  const auto window = host().recorderWindows().create(look, {});
  window->showAndMakeKey();
  underTest->openEditor("akuo");
  ASSERT_TRUE(underTest->waitUntil([&] { return !underTest->isInFront(); }));
  application().activate(true);
  EXPECT_TRUE(underTest->waitUntil([&] { return underTest->isInFront(); }));
}

TEST_F(ApplicationContract, beepsOncePerCall) {
  EXPECT_EQ(underTest->beeps(), 0);
  application().beep();
  application().beep();
  const int heard = underTest->hasBell() ? 2 : 0;
  EXPECT_TRUE(underTest->waitUntil([&] { return underTest->beeps() == heard; }));
}

}  // namespace
}  // namespace lexwend::contract
