// SPDX-License-Identifier: MIT
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/fake/fake_host.h"
#include "support/settings.h"
#include "tools/doctor_checks.h"
#include "tools/doctor_report.h"

namespace lexwend {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::Not;

/// A desktop in memory on which all is well; the home is a real folder.
struct Doctor : ::testing::Test {
  Doctor() {
    fs::remove_all(home);
    fs::create_directories(home / "Library/Logs");
    host.files().home = home.string();
    session.display = ":7";
    session.agentProcess = 4711;
    session.settingsPath = (home / "settings").string();
    session.autostartPath = (home / "autostart.desktop").string();
    session.autostartProgram = "/usr/bin/lexwend";
    session.autostartIsOn = true;
    host.hotKeyService().otherAppTakes(platform::kKeyF2, platform::kNoModifiers);
    editor = host.apps().open("Editor", "com.example.editor", "akuo");
  }
  ~Doctor() override { fs::remove_all(home); }

  std::vector<Check> checks(bool focusIsMeant = false) { return examine({.focusIsMeant = focusIsMeant}); }
  Check check(const std::string& name, bool focusIsMeant = false) {
    for (Check& found : checks(focusIsMeant)) {
      if (found.name == name) return std::move(found);
    }
    ADD_FAILURE() << "there is no check " << name;
    return {};
  }
  void expectFinding(const std::string& name, const std::string& words, bool focusIsMeant = false) {
    const Check found = check(name, focusIsMeant);
    EXPECT_EQ(found.state, CheckState::finding) << name;
    EXPECT_THAT(found.found.english, HasSubstr(words));
    EXPECT_NE(found.found.hebrew, found.found.english);
    EXPECT_NE(found.advice.english, "");
    EXPECT_NE(found.advice.hebrew, "");
    EXPECT_TRUE(hasFindings(checks(focusIsMeant)));
  }
  void expectNote(const std::string& name, const std::string& words) {
    const Check found = check(name);
    EXPECT_EQ(found.state, CheckState::note) << name;
    EXPECT_THAT(found.found.english, HasSubstr(words));
    EXPECT_NE(found.found.hebrew, found.found.english);
    EXPECT_FALSE(hasFindings(checks()));
  }
  void writeLog(const std::string& text) { std::ofstream(home / "Library/Logs/Lexwend.log") << text; }

  fs::path home = fs::path(::testing::TempDir()) / ("lexwend-doctor-" + std::to_string(getpid()));
  platform::FakeHost host;
  platform::HostScope scope{host};
  platform::SessionFacts& session = host.diagnosis().session;
  std::shared_ptr<platform::FakeApp> editor;
};

TEST_F(Doctor, findsNothingWhereAllIsWell) {
  for (const Check& found : checks()) EXPECT_EQ(found.state, CheckState::good) << found.name;
}

TEST_F(Doctor, showsNothingOfTheText) {
  editor->focus()->selectAll();
  EXPECT_THAT(asText({checks(), {}}, "1", {}), Not(HasSubstr("akuo")));
  EXPECT_THAT(asJson({checks(), {}}, "1"), Not(HasSubstr("akuo")));
}

TEST_F(Doctor, leavesNoHotKeyBehind) {
  session.agentProcess.reset();
  EXPECT_FALSE(checks().empty());
  EXPECT_TRUE(host.hotKeyService().registered().empty());
}

TEST_F(Doctor, findsThatTheAgentDoesNotRun) {
  session.agentProcess.reset();
  expectFinding("agent", "does not run");
}

TEST_F(Doctor, findsWhatASessionOfThisTypeCannotDo) {
  session.limit = platform::Sentence{"nothing works in windows of that kind", "שום דבר לא עובד בחלונות האלה"};
  session.desktop = "GNOME";
  expectFinding("session", "nothing works in windows of that kind (GNOME)");
}

TEST_F(Doctor, saysWhatToDoAboutThat) {
  session.limit = platform::Sentence{"no keys", "אין מקשים"};
  EXPECT_THAT(asText({checks(), {}}, "1", {}), HasSubstr("choose the session on X11"));
  session.wayOut = platform::Sentence{"install it", "להתקין"};
  EXPECT_THAT(asText({checks(), {}}, "1", {}), HasSubstr("install it"));
  EXPECT_THAT(asText({checks(), {}}, "1", {}), Not(HasSubstr("choose the session on X11")));
}

TEST_F(Doctor, findsThatThereIsNoDisplay) {
  session.displayAnswers = false;
  expectFinding("display", "no display answers at :7");
  session.display = "";
  expectFinding("display", "DISPLAY is not set");
}

TEST_F(Doctor, asksNothingOfADisplayThatIsNotThere) {
  session.displayAnswers = false;
  for (const Check& found : checks()) EXPECT_NE(found.name, "hotKey");
}

TEST_F(Doctor, findsMissingExtensions) {
  session.missingExtensions = {"XTEST", "XKB"};
  expectFinding("display", "XTEST, XKB");
}

TEST_F(Doctor, findsTheHotKeyWithAnotherProgram) {
  session.agentProcess.reset();
  expectFinding("hotKey", "another program holds it");
}

TEST_F(Doctor, findsTheHotKeyWithNobodyAlthoughTheAgentRuns) {
  Settings::setHotKey(platform::kKeyF5, platform::kNoModifiers);
  expectFinding("hotKey", "nobody holds it");
}

TEST_F(Doctor, findsThatNoPressOfTheHotKeyComes) {
  host.hotKeyService().takeSettings();
  expectFinding("hotKey", "no press of it reaches Lexwend");
}

TEST_F(Doctor, findsADamagedHotKey) {
  host.standardUserDefaults().put(Settings::kHotKeyCodeKey, std::int64_t{-1});
  expectFinding("hotKey", "damaged");
}

TEST_F(Doctor, findsAMissingLayout) {
  host.inputSourceService().setLayouts({platform::usLayout(), platform::russianLayout()});
  expectFinding("layouts", "no Hebrew keyboard layout");
  host.inputSourceService().setLayouts({platform::hebrewLayout()});
  expectFinding("layouts", "no English keyboard layout");
  host.inputSourceService().setLayouts({platform::russianLayout()});
  expectFinding("layouts", "neither");
}

TEST_F(Doctor, notesTheBuiltInTableAndWhy) {
  auto silent = platform::hebrewLayout();
  silent.data = platform::FakeLayout::Data::absent;
  host.inputSourceService().setLayouts({platform::usLayout(), silent});
  expectNote("table", "does not tell its keys");
  host.inputSourceService().setLayouts({platform::usLayout()});
  EXPECT_THAT(check("table").found.english, HasSubstr("a layout is missing"));
}

TEST_F(Doctor, notesBusesThatDoNotAnswer) {
  session.accessibilityBus = false;
  expectNote("accessibility", "accessibility bus does not answer");
  session.sessionBus = false;
  expectNote("accessibility", "no session bus");
}

TEST_F(Doctor, findsAPasswordFieldOnlyWhereTheUserMeantIt) {
  host.secureInput().hold(true);
  expectNote("focus", "password field or a terminal");
  expectFinding("focus", "(com.example.editor)", /*focusIsMeant=*/true);
}

TEST_F(Doctor, notesAnApplicationThatDoesNotAnswer) {
  host.accessibility().answerFocus(platform::FakeAnswer::fails(-25212));
  expectNote("focus", "does not tell of its field");
}

TEST_F(Doctor, findsThatThereIsNoTray) {
  session.tray = false;
  expectFinding("tray", "nothing shows the icons");
}

TEST_F(Doctor, notesAnAgentThatDoesNotStartAtLogin) {
  session.autostartIsOn = false;
  expectNote("autostart", "does not start at login");
}

TEST_F(Doctor, findsAnAutostartEntryWhoseProgramIsGone) {
  session.autostartProgramIsThere = false;
  expectFinding("autostart", "not there: /usr/bin/lexwend");
}

TEST_F(Doctor, findsSettingsThatAreNoFile) {
  fs::create_directory(session.settingsPath);
  expectFinding("settings", "cannot be read or written");
}

TEST_F(Doctor, notesSettingsThatChangeWhatAFixDoes) {
  Settings::d().setBool(false, Settings::kSwitchLayoutAfterKey);
  expectNote("settings", "does not follow");
  Settings::d().setBool(true, Settings::kCompatModeKey);
  expectNote("settings", "compatibility mode");
}

TEST_F(Doctor, findsThatThereIsNoPlaceForTheLog) {
  fs::remove_all(home / "Library");
  expectFinding("log", "nothing can be written to the log");
  EXPECT_THAT(check("log").advice.english, HasSubstr("mkdir -p " + (home / "Library/Logs").string()));
}

TEST_F(Doctor, showsTheLastOutcomesOfTheLog) {
  writeLog(
      "1 fix: failed first\n2 fix: front=Editor currentHebrew=false\n3 fix: success target=he\n"
      "4 AX path: done\n5 fix: failed noSelection\n6 fix: failed secureInput\n");
  const std::string found = check("log").found.english;
  EXPECT_THAT(found,
              HasSubstr("3 fix: success target=he, 5 fix: failed noSelection, 6 fix: failed secureInput"));
  EXPECT_THAT(found, Not(HasSubstr("first")));
  EXPECT_THAT(found, Not(HasSubstr("front=")));
}

TEST_F(Doctor, findsThatNoFontHasHebrew) {
  session.hebrewFont = false;
  expectFinding("fonts", "no font has Hebrew letters");
}

const DoctorReport kReport = {
    {{"tray", CheckState::finding, {"no \"tray\"\n", "אין מגש"}, {"add one", "להוסיף"}}},
    {{"clipboard", true, std::chrono::milliseconds(12), {"the text was fixed", "הטקסט תוקן"}}}};

TEST(DoctorReport, isReadableInBothLanguages) {
  EXPECT_EQ(asText(kReport, "1.2", {}),
            "Lexwend 1.2\nPROBLEM  no \"tray\"\n\n           -> add one\n\nTrial in a field of its own\n"
            "ok       clipboard: the text was fixed in 12 ms\n");
  EXPECT_EQ(asText(kReport, "1.2", {.hebrew = true}),
            "בדיקה של Lexwend 1.2\nתקלה: אין מגש\n    מה עושים: להוסיף\n\nניסיון בשדה של הבדיקה\n"
            "תקין: הטקסט תוקן (clipboard) בתוך 12 אלפיות שנייה\n");
}

TEST(DoctorReport, isJsonForTools) {
  EXPECT_EQ(asJson(kReport, "1.2"),
            "{\"version\": \"1.2\", \"good\": false, \"checks\": [\n"
            "  {\"name\": \"tray\", \"state\": \"finding\", \"found\": \"no \\\"tray\\\"\\u000a\", "
            "\"advice\": \"add "
            "one\"}], \"trial\": [\n"
            "  {\"name\": \"clipboard\", \"done\": true, \"milliseconds\": 12, \"said\": \"the text was "
            "fixed\"}]}\n");
}

TEST(DoctorReport, isWellOnlyWithoutFindingsAndWithEveryStepDone) {
  EXPECT_FALSE(allIsWell(kReport));
  EXPECT_TRUE(allIsWell({{}, kReport.trial}));
  EXPECT_FALSE(allIsWell({{}, {{"clipboard", false, {}, {}}}}));
  EXPECT_TRUE(allIsWell({{{"fonts", CheckState::note, {}, {}}}, {}}));
}

}  // namespace
}  // namespace lexwend
