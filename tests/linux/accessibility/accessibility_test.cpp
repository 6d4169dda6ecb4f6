// SPDX-License-Identifier: MIT
#include "platform/linux/accessibility/accessibility.h"

#include <chrono>
#include <cstdlib>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "tests/linux/testing/private_bus.h"
#include "tests/linux/testing/scripted_application.h"
#include "tests/linux/testing/temporary_folder.h"
#include "tests/linux/testing/virtual_display.h"

namespace lexwend::platform {
namespace {

using Clock = std::chrono::steady_clock;
using Ranges = std::vector<std::pair<int, int>>;

constexpr AccessibilityError kNotConnected = -25204;
/// No call waits longer than a second; the rest is for a busy machine.
constexpr std::chrono::milliseconds kBounded(1500);

/// One bus for the tests of a process, which has one connection to its session's.
void enterSession() {
  static const PrivateBus kBus;
}

struct AField : ::testing::Test {
  AField() {
    enterSession();
    app = std::make_unique<ScriptedApplication>();
    app->show({});
    access = std::make_unique<LinuxAccessibility>(
        LinuxAccessibility::Display{.mayControl = [] { return true; },
                                    .frontProcess = [this] { return process; },
                                    .frontWindowClass = [this] { return windowClass; },
                                    .primarySelection = [this] { return primary; }});
    access->start();
    connected = pumpUntil([this] { return focus().error != kNotConnected; });
  }
  void SetUp() override { ASSERT_TRUE(connected); }

  AttributeResult focus() {
    return access->copyAttributeValue(access->createSystemWideElement(), kFocusedUIElementAttribute);
  }
  AccessibilityElementRef element() {
    const auto result = focus();
    const auto* found = std::get_if<AccessibilityElementRef>(&result.value);
    return found != nullptr ? *found : nullptr;
  }
  /// Another application, which may have another toolkit.
  void restart(const ScriptedField& field) {
    app = nullptr;
    app = std::make_unique<ScriptedApplication>();
    app->show(field);
  }
  /// A fix asks this first.
  AccessibilityElementRef elementOfFix() {
    EXPECT_FALSE(access->focusIsSecure());
    return element();
  }
  AccessibilityError replace(std::string_view text) {
    return access->setAttributeValue(elementOfFix(), kSelectedTextAttribute, text);
  }
  bool isSettable() { return access->isAttributeSettable(elementOfFix(), kSelectedTextAttribute).settable; }
  void expectNoTextWasRead() {
    for (const char* method : {"GetText", "GetStringAtOffset", "GetTextAtOffset", "GetCharacterAtOffset"}) {
      EXPECT_EQ(app->calls(method), 0) << method;
    }
  }

  std::optional<std::uint32_t> process = static_cast<std::uint32_t>(::getpid());
  std::optional<std::string> windowClass;
  std::optional<std::string> primary;
  std::unique_ptr<ScriptedApplication> app;
  std::unique_ptr<LinuxAccessibility> access;
  bool connected = false;
};

ScriptedField selected(const char16_t* text, std::pair<int, int> range, const char* toolkit = "gtk") {
  ScriptedField field;
  field.toolkit = toolkit;
  field.text = text;
  field.selections = {range};
  return field;
}

// ---- Writing

TEST_F(AField, isReplacedInTheUnitsOfItsToolkit) {
  for (const auto& [toolkit, range] : {std::pair("gtk", std::pair(1, 4)), {"GTK", {1, 4}}, {"Qt", {1, 5}}}) {
    SCOPED_TRACE(toolkit);
    restart(selected(u"a\U0001F600kuo", range, toolkit));
    ASSERT_EQ(replace("\U0001F600ש\U0001F600\nש"), 0);
    EXPECT_EQ(app->text(), "a\U0001F600ש\U0001F600\nשo");
    EXPECT_FALSE(app->wasOverrun());
    EXPECT_TRUE(pumpUntil([this] { return app->selections().empty(); }));
  }
}

TEST_F(AField, keepsItsTextWhenTheNewOneDoesNotGoInWhole) {
  const std::pair<const char*, std::function<void(ScriptedField&)>> behaviours[] = {
      {"cuts it short", [](ScriptedField& field) { field.maxLength = 10; }},
      {"has no room", [](ScriptedField& field) { field.maxLength = 8; }},
      {"changes it", [](ScriptedField& field) { field.filter = [](auto text) { return text.toUpper(); }; }},
      {"drops it", [](ScriptedField& field) { field.filter = [](auto) { return icu::UnicodeString(); }; }},
      {"leaves out a part",
       [](ScriptedField& field) { field.filter = [](auto text) { return text.remove(1, 2); }; }},
      {"refuses it", [](ScriptedField& field) { field.refused = {"InsertText"}; }},
      {"fails", [](ScriptedField& field) { field.broken = {"InsertText"}; }},
      {"refuses to delete", [](ScriptedField& field) { field.refused = {"DeleteText"}; }},
      {"does not tell its length", [](ScriptedField& field) { field.broken = {"Get CharacterCount"}; }},
  };
  for (const auto& [what, behave] : behaviours) {
    SCOPED_TRACE(what);
    // What stands behind the selection is just what is to go in.
    ScriptedField field = selected(u"akuoabcd", {0, 4});
    behave(field);
    app->show(field);
    EXPECT_NE(replace("abcd"), 0);
    if (field.refused.count("DeleteText") != 0) {
      // It refuses to take the new text out as well; the old one is still there.
      EXPECT_EQ(app->text(), "akuoabcdabcd");
      continue;
    }
    EXPECT_EQ(app->text(), "akuoabcd");
    EXPECT_EQ(app->selections(), Ranges({{0, 4}}));
  }
}

TEST_F(AField, whoseSelectionCutsACharacterIsNotTouched) {
  for (const auto& range : Ranges({{0, 2}, {2, 4}, {2, 3}})) {
    SCOPED_TRACE(range.first);
    restart(selected(u"a\U0001F600kuo", range, "Qt"));
    EXPECT_NE(replace("x"), 0);
    EXPECT_EQ(app->text(), "a\U0001F600kuo");
    EXPECT_EQ(app->calls("InsertText"), 0);
  }
  restart(selected(u"kuo\U0001F600", {3, 5}, "Qt"));  // up to the end of the text
  EXPECT_EQ(replace("x"), 0);
  EXPECT_EQ(app->text(), "kuox");
}

TEST_F(AField, takesWhatIsTypedBehindTheNewText) {
  ScriptedField field = selected(u"akuo nv", {0, 4});
  field.selectionGrows = true;
  field.meanwhile = {{"DeleteText", [](ScriptedField& typedInto) {
                        if (typedInto.selections.empty()) {
                          typedInto.text.insert(typedInto.caret, u"1");
                        } else {
                          const auto [start, end] = typedInto.selections.front();
                          typedInto.text.replaceBetween(start, end, u"1");
                        }
                      }}};
  app->show(field);
  EXPECT_EQ(replace("שלום"), 0);
  EXPECT_EQ(app->text(), "שלום1 nv");
}

TEST_F(AField, ofAnApplicationThatStopsIsReplacedWhenItGoesOn) {
  for (const char* method : {"InsertText", "DeleteText"}) {
    SCOPED_TRACE(method);
    ScriptedField field = selected(u"akuo nv", {0, 4});
    field.stopsBefore = method;
    app->show(field);
    const auto start = Clock::now();
    EXPECT_EQ(replace("שלום"), 0);
    EXPECT_LT(Clock::now() - start, kBounded);
    EXPECT_NE(app->text().find("akuo"), std::string::npos);
    app->resume();
    EXPECT_TRUE(pumpUntil([this] { return app->text() == "שלום nv"; })) << app->text();
  }
}

TEST_F(AField, ofAnApplicationThatStopsKeepsItsTextWhenTheNewOneIsCutShort) {
  ScriptedField field = selected(u"akuo nv", {0, 4});
  field.stopsBefore = "InsertText";
  field.maxLength = 9;
  app->show(field);
  EXPECT_EQ(replace("שלום"), 0);
  app->resume();
  EXPECT_EQ(app->text(), "akuoשל nv");
  EXPECT_TRUE(pumpUntil([this] { return app->calls("SetSelection") == 1; }));
  EXPECT_EQ(app->text(), "akuo nv");
}

TEST_F(AField, ofAnApplicationThatStopsIsNotTouchedAfterTheAgentHasLeft) {
  ScriptedField field = selected(u"akuo nv", {0, 4});
  field.stopsBefore = "InsertText";
  app->show(field);
  EXPECT_EQ(replace("שלום"), 0);
  access.reset();
  app->resume();
  while (g_main_context_iteration(nullptr, FALSE) != FALSE) continue;
  EXPECT_EQ(app->text(), "akuoשלום nv");
  EXPECT_EQ(app->calls("DeleteText") + app->calls("AddSelection"), 0);
}

TEST_F(AField, isLeftToTheClipboardWhereItCannotBeWrittenTo) {
  const std::pair<const char*, std::function<void(ScriptedField&)>> fields[] = {
      {"another toolkit", [](ScriptedField& field) { field.toolkit = "Chromium"; }},
      {"a paragraph of a document", [](ScriptedField& field) { field.role = ATSPI_ROLE_PARAGRAPH; }},
      {"not editable", [](ScriptedField& field) { field.states &= ~stateBit(ATSPI_STATE_EDITABLE); }},
      {"read-only", [](ScriptedField& field) { field.states |= stateBit(ATSPI_STATE_READ_ONLY); }},
      {"text alone", [](ScriptedField& field) { field.interfaces = {kAtspiText}; }},
      {"no states", [](ScriptedField& field) { field.broken = {"GetInterfaces"}; }},
      {"one line of Qt",
       [](ScriptedField& field) {
         field.toolkit = "Qt";
         field.states &= ~stateBit(ATSPI_STATE_MULTI_LINE);
       }},
  };
  for (const auto& [what, change] : fields) {
    SCOPED_TRACE(what);
    app = nullptr;
    app = std::make_unique<ScriptedApplication>();
    ScriptedField field = selected(u"akuo", {0, 4});
    restart(field);
    EXPECT_TRUE(isSettable());
    change(field);
    restart(field);
    EXPECT_FALSE(isSettable());
  }
}

TEST_F(AField, tellsItsSelectionWhenThereIsOne) {
  const auto selectedText = [this] { return access->copyAttributeValue(element(), kSelectedTextAttribute); };
  app->show(selected(u"akuo nv", {7, 5}));
  EXPECT_EQ(selectedText().value, AccessibilityValue(std::string("nv")));
  app->show(selected(u"akuo nv", {5, 5}));
  EXPECT_EQ(selectedText().value, AccessibilityValue(std::string()));

  ScriptedField several = selected(u"akuo nv", {0, 2});
  several.selections.emplace_back(5, 7);
  app->show(several);
  EXPECT_NE(selectedText().error, 0);
  EXPECT_NE(replace("שלום"), 0);
  EXPECT_EQ(app->text(), "akuo nv");

  for (const char* method : {"GetNSelections", "GetSelection", "GetText"}) {
    ScriptedField broken = selected(u"akuo nv", {0, 4});
    broken.broken = {method};
    app->show(broken);
    EXPECT_NE(selectedText().error, 0) << method;
  }
}

TEST_F(AField, tellsItsRoleInWordsThatSpoilNoLogLine) {
  ScriptedField field = selected(u"akuo", {0, 4});
  field.roleName = "text\n2026-01-01 00:00:00.000 fix: success\x1b[2J" + std::string(1000, 'x');
  app->show(field);
  const auto value = access->copyAttributeValue(elementOfFix(), kRoleAttribute).value;
  const std::string* name = std::get_if<std::string>(&value);
  ASSERT_NE(name, nullptr);
  EXPECT_EQ(name->find_first_of("\n\x1b"), std::string::npos);
  EXPECT_EQ(name->size(), 200U);
}

TEST_F(AField, tellsItsWholeText) {
  ScriptedField field = selected(u"a\U0001F600kuo", {0, 1});
  for (const bool knowsItsEnd : {true, false}) {
    field.knowsItsEnd = knowsItsEnd;
    app->show(field);
    const auto value = access->copyAttributeValue(element(), kValueAttribute);
    EXPECT_EQ(value.value, AccessibilityValue(std::string("a\U0001F600kuo"))) << knowsItsEnd;
  }
  field.text.remove();
  app->show(field);
  EXPECT_EQ(access->copyAttributeValue(element(), kValueAttribute).value, AccessibilityValue(std::string()));
  field.broken = {"GetText"};
  app->show(field);
  EXPECT_NE(access->copyAttributeValue(element(), kValueAttribute).error, 0);
}

TEST_F(AField, isReplacedInAFewWaitsWhenItsFocusIsKnown) {
  app->show(selected(u"akuo nv", {0, 4}));
  ASSERT_NE(elementOfFix(), nullptr);
  app->show(selected(u"akuo nv", {0, 4}));

  // The steps of a fix, as the agent takes them.
  EXPECT_FALSE(access->focusIsSecure());
  const auto found = element();
  const auto answer = [&](std::string_view attribute) {
    return access->copyAttributeValue(found, attribute).value;
  };
  EXPECT_EQ(answer(kRoleAttribute), AccessibilityValue(std::string("text")));
  EXPECT_EQ(answer(kSelectedTextAttribute), AccessibilityValue(std::string("akuo")));
  EXPECT_TRUE(access->isAttributeSettable(found, kSelectedTextAttribute).settable);
  EXPECT_EQ(answer(kValueAttribute), AccessibilityValue(std::string("akuo nv")));
  EXPECT_EQ(access->setAttributeValue(found, kSelectedTextAttribute, "שלום"), 0);
  EXPECT_EQ(answer(kValueAttribute), AccessibilityValue(std::string("שלום nv")));
  EXPECT_LE(access->waitsOfFix(), 5);

  // The password check comes in the first wait and once more before the text is read.
  EXPECT_EQ(app->calls("GetRole"), 2);
  EXPECT_EQ(answer(kValueAttribute), AccessibilityValue(std::string("שלום nv"))) << "asked anew";
}

TEST_F(AField, thatLiesAboutItsSelectionIsNotTouched) {
  constexpr int kMax = std::numeric_limits<int>::max();
  constexpr int kMin = std::numeric_limits<int>::min();
  for (const auto& range : Ranges({{kMax, -2147483636}, {kMin, kMax}, {-1, 4}, {0, 8}, {0, kMax}, {7, 9}})) {
    SCOPED_TRACE(range.first);
    app->show(selected(u"akuo nv", range));
    EXPECT_NE(replace("שלום"), 0);
    EXPECT_EQ(app->calls("InsertText") + app->calls("DeleteText") + app->calls("GetText"), 0);
  }
  ScriptedField short_ = selected(u"akuo nv", {0, 4});
  short_.claimedLength = -7;
  app->show(short_);
  EXPECT_NE(replace("שלום"), 0);
  EXPECT_EQ(app->calls("InsertText") + app->calls("DeleteText"), 0);
}

TEST_F(AField, whoseTextIsNotAsLongAsItsSelectionIsNotTouched) {
  ScriptedField field = selected(u"akuo nv", {0, 4});
  field.meanwhile = {{"GetText", [](ScriptedField& changed) { changed.text = u"ak"; }}};
  app->show(field);
  EXPECT_NE(replace("שלום"), 0);
  EXPECT_EQ(app->calls("InsertText"), 0);
}

TEST_F(AField, keepsWhatItsUserTypesMeanwhile) {
  const auto typeOverSelection = [](ScriptedField& field) {
    field.text.replaceBetween(0, 4, u"x");
    field.selections.clear();
  };
  for (const char* method : {"InsertText", "GetText"}) {
    SCOPED_TRACE(method);
    ScriptedField field = selected(u"akuo nv", {0, 4});
    app->show(field);
    EXPECT_FALSE(access->focusIsSecure());
    const auto found = element();
    ASSERT_EQ(access->copyAttributeValue(found, kSelectedTextAttribute).error, 0);
    field.meanwhile = {{method, typeOverSelection}};
    app->show(field);
    EXPECT_NE(access->setAttributeValue(found, kSelectedTextAttribute, "שלום"), 0);
    EXPECT_TRUE(pumpUntil([this] { return app->text() == "x nv"; })) << app->text();
    EXPECT_EQ(app->calls("AddSelection") + app->calls("SetSelection"), 0);
  }
}

TEST_F(AField, ofAnEditorThatUndoesOnlyWhatIsPastedIsLeftToTheClipboard) {
  app->show(selected(u"akuo", {0, 4}));
  EXPECT_TRUE(isSettable());
  for (const char* editor : {"L3afpad", "Bluefish"}) {
    windowClass = editor;
    EXPECT_FALSE(isSettable()) << editor;
  }
}

TEST_F(AField, withNothingSelectedIsKnownToBeSoWhereTheToolkitTellsTheTruth) {
  const auto isKnownEmpty = [this](const ScriptedField& field) {
    restart(field);
    EXPECT_TRUE(pumpUntil([this] { return focus().error != kNotConnected; }));
    EXPECT_FALSE(access->focusIsSecure());
    return access->selectionIsKnownEmpty();
  };
  for (const char* toolkit : {"gtk", "GTK", "Qt"}) {
    SCOPED_TRACE(toolkit);
    EXPECT_FALSE(isKnownEmpty(selected(u"akuo", {0, 4}, toolkit)));
    EXPECT_TRUE(isKnownEmpty(selected(u"akuo", {4, 4}, toolkit)));
    ScriptedField none = selected(u"akuo", {0, 4}, toolkit);
    none.selections.clear();
    EXPECT_TRUE(isKnownEmpty(none));
    none.states &= ~stateBit(ATSPI_STATE_EDITABLE);
    EXPECT_FALSE(isKnownEmpty(none)) << "a page, not a field";
  }
  ScriptedField other = selected(u"akuo", {4, 4}, "Chromium");
  EXPECT_FALSE(isKnownEmpty(other));
  ScriptedField silent = selected(u"akuo", {4, 4});
  silent.broken = {"GetNSelections"};
  EXPECT_FALSE(isKnownEmpty(silent));
  process.reset();
  EXPECT_FALSE(access->focusIsSecure());
  EXPECT_FALSE(access->selectionIsKnownEmpty());
}

TEST_F(AField, whoseSelectionComesWithKeysThatAreStillOnTheirWayIsAskedOnceMore) {
  restart(selected(u"akuo", {4, 4}));
  ASSERT_TRUE(pumpUntil([this] { return focus().error != kNotConnected; }));
  EXPECT_FALSE(access->focusIsSecure());
  app->show(selected(u"akuo", {0, 4}));
  EXPECT_FALSE(access->selectionIsKnownEmpty());
}

// ---- Fields that hide their text

TEST_F(AField, forPasswordsIsToldWithoutItsText) {
  ScriptedField password = selected(u"akuo", {0, 4});
  password.role = ATSPI_ROLE_PASSWORD_TEXT;
  ScriptedField silent = selected(u"akuo", {0, 4});
  silent.broken = {"GetRole"};
  for (const auto& field : {password, silent}) {
    app->show(field);
    EXPECT_TRUE(access->focusIsSecure());
    EXPECT_EQ(element(), nullptr);
    expectNoTextWasRead();
  }
}

TEST_F(AField, thatShowsOneSignOverAndOverIsOneForPasswords) {
  for (const char* sign : {"\u2022", "\u25CF", "\u2731", "\u273A", "*", "#", "-", " ", "\U0001F600"}) {
    SCOPED_TRACE(sign);
    app->show(selected(u"xakuox", {1, 5}));
    primary = std::string(sign) + sign + sign + sign;
    EXPECT_TRUE(access->focusIsSecure());
    EXPECT_EQ(element(), nullptr);
    expectNoTextWasRead();
  }
}

TEST_F(AField, withOrdinaryTextIsNotOneForPasswords) {
  app->show(selected(u"xakuox", {1, 5}));
  for (const char* shown : {"akuo", "aaaa", "שששש", "1111", "***", "*****", "***a", "a***", ""}) {
    primary = shown;
    EXPECT_FALSE(access->focusIsSecure()) << shown;
  }
  primary.reset();
  EXPECT_FALSE(access->focusIsSecure());
  primary = "****";
  app->show(selected(u"xakuox", {5, 5}));
  EXPECT_FALSE(access->focusIsSecure()) << "nothing is selected";
}

TEST_F(AField, thatGotTheFocusSinceIsLookedAtToo) {
  app->show(selected(u"akuo", {0, 4}));
  EXPECT_FALSE(access->focusIsSecure());
  EXPECT_NE(element(), nullptr);

  EXPECT_FALSE(access->focusIsSecure());
  ScriptedField password = selected(u"akuo", {0, 4});
  password.path = "/password";
  password.role = ATSPI_ROLE_PASSWORD_TEXT;
  app->show(password);
  EXPECT_EQ(element(), nullptr);
  expectNoTextWasRead();
}

TEST_F(AField, thatBeginsToHideItsTextIsLookedAtAnew) {
  ScriptedField field = selected(u"akuo", {0, 4});
  app->show(field);
  EXPECT_FALSE(access->focusIsSecure());
  field.role = ATSPI_ROLE_PASSWORD_TEXT;
  app->show(field);
  EXPECT_TRUE(access->focusIsSecure());
  EXPECT_EQ(element(), nullptr);
}

TEST_F(AField, ofAnApplicationThatHasStoppedKeepsNobodyWaiting) {
  const std::pair<const char*, bool> methods[] = {{"GetState", false}, {"GetRole", true}};
  for (const auto& [method, isSecure] : methods) {
    SCOPED_TRACE(method);
    ScriptedField field = selected(u"akuo", {0, 4});
    field.stopsBefore = method;
    app->show(field);
    const auto start = Clock::now();
    EXPECT_EQ(access->focusIsSecure(), isSecure);
    EXPECT_EQ(element(), nullptr);
    EXPECT_LT(Clock::now() - start, kBounded);
    app->resume();
  }
}

TEST_F(AField, ofATerminalIsSecure) {
  ScriptedField terminal = selected(u"akuo", {0, 4});
  terminal.role = ATSPI_ROLE_TERMINAL;
  app->show(terminal);
  EXPECT_TRUE(access->focusIsSecure());
  EXPECT_EQ(element(), nullptr);
  expectNoTextWasRead();
}

// ---- Finding it

TEST_F(AField, isFoundInTheProcessInFrontOnly) {
  app->show(selected(u"akuo", {0, 4}));
  EXPECT_NE(element(), nullptr);
  process = 1;
  EXPECT_EQ(element(), nullptr);
}

TEST_F(AField, thatLosesTheFocusForAMomentToTheHotKeyIsFound) {
  for (const std::uint32_t role : {ScriptedField().role, std::uint32_t{ATSPI_ROLE_PASSWORD_TEXT}}) {
    ScriptedField field = selected(u"akuo", {0, 4});
    field.role = role;
    field.answersUnfocused = 2;
    app->show(field);
    EXPECT_EQ(access->focusIsSecure(), role == ATSPI_ROLE_PASSWORD_TEXT);
    EXPECT_EQ(element() != nullptr, role != ATSPI_ROLE_PASSWORD_TEXT);
  }
}

TEST_F(AField, withoutTheFocusIsGivenUp) {
  ScriptedField field = selected(u"akuo", {0, 4});
  field.states &= ~stateBit(ATSPI_STATE_FOCUSED);
  app->show(field);
  const auto start = Clock::now();
  EXPECT_FALSE(access->focusIsSecure());
  EXPECT_EQ(element(), nullptr);
  EXPECT_LT(Clock::now() - start, kBounded);
}

/// A window in which the field stands among so many objects that no search finds it.
std::map<std::string, ScriptedObject> crowdedWindow() {
  std::map<std::string, ScriptedObject> window;
  ScriptedObject& frame = window[ScriptedApplication::kWindow];
  for (int i = 0; i < 2000; ++i) frame.children.push_back("/label" + std::to_string(i));
  return window;
}

TEST_F(AField, thatSaysThatItGotTheFocusIsFoundWithoutASearch) {
  ScriptedField field = selected(u"akuo", {0, 4});
  field.path = "/deep";
  app->show(field, crowdedWindow());
  EXPECT_EQ(elementOfFix(), nullptr);
  app->sayFocused("/deep");
  EXPECT_TRUE(pumpUntil([this] { return elementOfFix() != nullptr; }));

  app->show(field, crowdedWindow());
  EXPECT_NE(elementOfFix(), nullptr);
  EXPECT_EQ(app->calls("GetChildren"), 0);
}

TEST_F(AField, isLookedForInTheActiveWindowOnly) {
  std::map<std::string, ScriptedObject> windows = {
      {ScriptedApplication::kRoot, {.children = {"/other", ScriptedApplication::kWindow}}},
      {"/other", {.children = {"/label"}}},
      {"/label", {}},
  };
  ScriptedField field = selected(u"akuo", {0, 4});
  field.path = "/new";
  app->show(field, windows);
  app->sayActive(ScriptedApplication::kWindow);
  const auto searched = [&] {
    app->show(field, windows);
    EXPECT_NE(elementOfFix(), nullptr);
    field.path += "er";  // what was found is not asked again
    return app->calls("GetChildren", "/other") != 0;
  };
  EXPECT_TRUE(pumpUntil([&] { return !searched(); })) << "told by an event";

  windows["/other"].states |= stateBit(ATSPI_STATE_ACTIVE);
  EXPECT_TRUE(searched()) << "told by a state";
}

TEST_F(AField, isFoundInTheActiveWindowWhereTheDisplayDoesNotTellWhichThatIs) {
  std::map<std::string, ScriptedObject> windows = {
      {ScriptedApplication::kRoot, {.children = {ScriptedApplication::kWindow}}},
      {ScriptedApplication::kWindow, {.children = {"/field"}}},
  };
  app->show(selected(u"akuo", {0, 4}), windows);
  LinuxAccessibility other{{.mayControl = [] { return true; },
                            .frontProcess = [] { return std::optional<std::uint32_t>(); },
                            .frontWindowClass = [] { return std::optional<std::string>(); },
                            .primarySelection = [] { return std::optional<std::string>(); },
                            .tellsFront = [] { return false; }}};
  other.start();
  const auto isFound = [&] {
    EXPECT_FALSE(other.focusIsSecure());
    return other.copyAttributeValue(other.createSystemWideElement(), kFocusedUIElementAttribute).error == 0;
  };
  EXPECT_TRUE(pumpUntil([&] {
    return other.copyAttributeValue(other.createSystemWideElement(), kFocusedUIElementAttribute).error !=
           kNotConnected;
  }));
  EXPECT_FALSE(isFound()) << "no window is active";
  windows[ScriptedApplication::kWindow].states |= stateBit(ATSPI_STATE_ACTIVE);
  app->show(selected(u"akuo", {0, 4}), windows);
  EXPECT_TRUE(isFound());
  // The application has lost the keyboard to one that is not on the bus.
  app->sayActive(ScriptedApplication::kWindow);
  windows[ScriptedApplication::kWindow].states &= ~stateBit(ATSPI_STATE_ACTIVE);
  app->show(selected(u"akuo", {0, 4}), windows);
  EXPECT_FALSE(isFound());
}

TEST_F(AField, isOfTheProcessWhoseWindowIsActive) {
  std::map<std::string, ScriptedObject> windows = {
      {ScriptedApplication::kRoot, {.children = {ScriptedApplication::kWindow}}},
      {ScriptedApplication::kWindow, {.children = {"/field"}}},
  };
  const auto show = [&](bool isActive) {
    const std::uint64_t bit = stateBit(ATSPI_STATE_ACTIVE);
    std::uint64_t& states = windows[ScriptedApplication::kWindow].states;
    states = isActive ? states | bit : states & ~bit;
    app->show({}, windows);
  };
  const auto own = std::optional(static_cast<std::uint32_t>(::getpid()));
  show(false);
  EXPECT_EQ(access->activeProcess(), std::nullopt);
  show(true);
  EXPECT_EQ(access->activeProcess(), own) << "it was active before anybody listened";
  EXPECT_NE(app->calls("GetChildren"), 0);
  app->sayActive(ScriptedApplication::kWindow);
  const auto isKnown = [&] {
    show(true);
    EXPECT_EQ(access->activeProcess(), own);
    return app->calls("GetChildren") == 0;
  };
  EXPECT_TRUE(pumpUntil(isKnown)) << "what has said that it is active is asked first";
  show(false);
  EXPECT_EQ(access->activeProcess(), std::nullopt) << "it is so no more";
}

TEST_F(AField, isOfNobodyBeforeTheBusIsReached) {
  LinuxAccessibility other{{.mayControl = [] { return true; },
                            .frontProcess = [] { return std::optional<std::uint32_t>(); },
                            .frontWindowClass = [] { return std::optional<std::string>(); },
                            .primarySelection = [] { return std::optional<std::string>(); }}};
  EXPECT_EQ(other.activeProcess(), std::nullopt);
}

TEST_F(AField, isFoundBesideReferencesToNobody) {
  const std::vector<std::pair<const char*, const char*>> malformed = {
      {"", "/org/a11y/atspi/null"},    {"", "/"}, {":", "/x"}, {"no name", "/x"}, {"a..b", "/x"},
      {":1.0", "/org/a11y/atspi/null"}};
  ScriptedObject window{.children = {"/field"}, .promisedChildren = 7};
  window.malformedChildren = malformed;
  const auto start = Clock::now();
  app->show(selected(u"akuo", {0, 4}), {{ScriptedApplication::kWindow, window}});
  EXPECT_NE(elementOfFix(), nullptr);
  EXPECT_LT(Clock::now() - start, kBounded);
}

TEST_F(AField, ofAnApplicationThatNamesNobodyAsItsApplicationIsNotWrittenTo) {
  ScriptedField field = selected(u"akuo", {0, 4});
  field.application = {"no name", "/x"};
  restart(field);
  EXPECT_FALSE(isSettable());
}

TEST_F(AField, whoseAnswersAreOfAnotherTypeIsNotTouched) {
  for (const char* method : {"GetState", "GetInterfaces", "GetRole", "GetSelection", "GetNSelections",
                             "GetText", "Get CharacterCount", "InsertText"}) {
    SCOPED_TRACE(method);
    ScriptedField field = selected(u"akuo nv", {0, 4});
    field.answersNonsense = {method};
    app->show(field);
    access->focusIsSecure();
    const auto found = element();
    EXPECT_NE(access->setAttributeValue(found, kSelectedTextAttribute, "שלום"), 0);
    EXPECT_EQ(app->calls("DeleteText"), 0);
  }
}

/// As LibreOffice with a sheet: these questions have no end there.
TEST_F(AField, isLookedForWithoutAQuestionWhoseCostTheApplicationDecides) {
  const std::pair<const char*, ScriptedObject> sheets[] = {
      {"by its state",
       {.states = stateBit(ATSPI_STATE_SHOWING) | stateBit(ATSPI_STATE_MANAGES_DESCENDANTS),
        .children = {"/cell"}}},
      {"a table", {.children = {"/cell"}, .role = ATSPI_ROLE_TABLE}},
      {"a tree", {.children = {"/cell"}, .role = ATSPI_ROLE_TREE}},
      {"a tree table", {.children = {"/cell"}, .role = ATSPI_ROLE_TREE_TABLE}},
      {"a list", {.children = {"/cell"}, .role = ATSPI_ROLE_LIST}},
      {"by its children", {.promisedChildren = std::numeric_limits<int>::max()}},
  };
  for (const auto& [what, sheet] : sheets) {
    SCOPED_TRACE(what);
    ScriptedField field = selected(u"akuo", {0, 4});
    field.path = "/elsewhere";
    field.hangs = {"GetMatches", "GetTree", "GetItems"};
    field.hangsAt = {{"/sheet", "GetChildren"}};
    app->show(field, {{ScriptedApplication::kWindow, {.children = {"/sheet"}}}, {"/sheet", sheet}});
    EXPECT_FALSE(access->focusIsSecure());
    EXPECT_EQ(element(), nullptr);
    EXPECT_GT(app->calls("GetState", "/sheet"), 0);
    EXPECT_FALSE(app->hasStopped());
    app->resume();
  }
}

TEST_F(AField, isFoundWithoutAskingTheCellsOfTables) {
  constexpr std::size_t kCells = 10000;
  const std::vector<std::string> cells(kCells, "/cell");
  const std::map<std::string, ScriptedObject> window = {
      {ScriptedApplication::kWindow,
       {stateBit(ATSPI_STATE_SHOWING), {"/table", "/list", "/modest", "/hidden", "/box"}, std::nullopt}},
      {"/table",
       {stateBit(ATSPI_STATE_SHOWING) | stateBit(ATSPI_STATE_MANAGES_DESCENDANTS), {"/cell"}, std::nullopt}},
      {"/list", {stateBit(ATSPI_STATE_SHOWING), cells, std::nullopt}},
      {"/modest", {stateBit(ATSPI_STATE_SHOWING), cells, 1}},
      {"/hidden", {0, {"/cell"}, std::nullopt}},
      {"/box", {stateBit(ATSPI_STATE_SHOWING), {"/field"}, std::nullopt}},
  };
  ScriptedField field = selected(u"akuo", {0, 4});
  field.path = "/other";  // the one that was found is gone
  app->show(field, window);
  EXPECT_FALSE(access->focusIsSecure());
  EXPECT_EQ(element(), nullptr);
  ASSERT_GT(app->calls("GetChildren", ScriptedApplication::kRoot), 0);
  for (const char* path : {"/table", "/list", "/hidden"}) {
    EXPECT_EQ(app->calls("GetChildren", path), 0) << path;
  }
  EXPECT_LT(app->calls("GetState"), 1000 * app->calls("GetChildren", ScriptedApplication::kRoot));

  auto withoutLies = window;
  withoutLies["/modest"].children = {"/cell"};
  field.path = "/field";
  app->show(field, withoutLies);
  // The application may still be busy with what it was asked before.
  EXPECT_TRUE(pumpUntil([this] { return elementOfFix() != nullptr; }));
}

// ---- The bus

/// The session's bus has the launcher of the accessibility bus, which is another one here.
struct AccessibilityBusOfItsOwn : ::testing::Test {
  AccessibilityBusOfItsOwn() {
    enterSession();
    session = std::getenv("DBUS_SESSION_BUS_ADDRESS");
  }
  ~AccessibilityBusOfItsOwn() override { ::setenv("DBUS_SESSION_BUS_ADDRESS", session.c_str(), 1); }

  /// A bus with an application on it, and nobody yet who tells of it.
  void startBus() {
    app = nullptr;
    bus = nullptr;
    bus = std::make_unique<PrivateBus>();
    app = std::make_unique<ScriptedApplication>();
    app->show(selected(u"akuo", {0, 4}));
    ::setenv("DBUS_SESSION_BUS_ADDRESS", session.c_str(), 1);
  }
  /// Takes the launcher's name over from the one before; nothing is ever without an owner, or the session
  /// would start a real launcher.
  void startLauncher(const std::string& address) {
    auto next = std::make_unique<BusPeer>();
    next->answer([address](const std::string& method, GVariant*) -> GVariant* {
      if (address.empty()) return nullptr;
      return method == "GetAddress" ? g_variant_new("(s)", address.c_str()) : g_variant_new("()");
    });
    next->ownName("org.a11y.Bus");
    launcher = std::move(next);
  }
  bool findsField() {
    const auto result =
        access.copyAttributeValue(access.createSystemWideElement(), kFocusedUIElementAttribute);
    return result.error == 0;
  }
  bool comesToFindField() {
    return pumpUntil([this] {
      access.focusIsSecure();
      return findsField();
    });
  }

  std::string session;
  std::unique_ptr<PrivateBus> bus;
  std::unique_ptr<ScriptedApplication> app;
  std::unique_ptr<BusPeer> launcher;
  LinuxAccessibility access{{.mayControl = [] { return true; },
                             .frontProcess = [] { return static_cast<std::uint32_t>(::getpid()); },
                             .frontWindowClass = [] { return std::nullopt; },
                             .primarySelection = [] { return std::nullopt; }}};
};

TEST_F(AccessibilityBusOfItsOwn, isUsedAsSoonAsItIsThere) {
  startLauncher("");
  const auto start = Clock::now();
  access.start();
  EXPECT_FALSE(findsField());
  EXPECT_LT(Clock::now() - start, kBounded);
  startBus();
  startLauncher(bus->address());
  EXPECT_TRUE(comesToFindField());
}

TEST_F(AccessibilityBusOfItsOwn, isUsedAgainWhenItComesBack) {
  startBus();
  startLauncher(bus->address());
  access.start();
  ASSERT_TRUE(comesToFindField());
  const std::string before = bus->address();
  startBus();
  ASSERT_NE(bus->address(), before);
  EXPECT_TRUE(pumpUntil([this] { return !findsField(); }));
  startLauncher(bus->address());
  EXPECT_TRUE(comesToFindField());
}

TEST_F(AccessibilityBusOfItsOwn, thatLetsNobodyInKeepsNobodyWaiting) {
  const lexwend::test::TemporaryFolder folder;
  const int silent = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_un name{};
  name.sun_family = AF_UNIX;
  const std::string path = folder.path() + "/bus";
  ASSERT_LT(path.copy(name.sun_path, sizeof name.sun_path), sizeof name.sun_path);
  ASSERT_EQ(::bind(silent, reinterpret_cast<const sockaddr*>(&name), sizeof name), 0);
  ASSERT_EQ(::listen(silent, 8), 0);

  startLauncher("unix:path=" + path);
  const auto start = Clock::now();
  access.start();
  pollfd calling{silent, POLLIN, 0};
  EXPECT_TRUE(pumpUntil([&] { return ::poll(&calling, 1, 0) == 1; })) << "it is asked";
  for (int i = 0; i < 20; ++i) {
    EXPECT_FALSE(access.focusIsSecure());
    EXPECT_FALSE(findsField());
  }
  EXPECT_LT(Clock::now() - start, kBounded);
  startBus();
  startLauncher(bus->address());
  EXPECT_TRUE(comesToFindField());
  ::close(silent);
}

}  // namespace
}  // namespace lexwend::platform
