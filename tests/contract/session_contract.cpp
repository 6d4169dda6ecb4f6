// SPDX-License-Identifier: MIT
// What surrounds the program: the user's session, who else runs, stored values, the login item, files and the
// date.
#include <cctype>

#include "platform/application.h"
#include "platform/date_formatter.h"
#include "platform/files.h"
#include "platform/login_item.h"
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

TEST_F(WorkspaceContract, observersHearOfEveryWake) {
  int wakes = 0;
  host().workspace().observeDidWake([&] { ++wakes; });
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

class ApplicationContract : public ContractTest {};

TEST_F(ApplicationContract, hasANameAndCanBeTaken) {
  EXPECT_FALSE(host().application().displayName().empty());
  EXPECT_EQ(host().application().takeSharedApplication(), std::nullopt);
}

}  // namespace
}  // namespace lexwend::contract
