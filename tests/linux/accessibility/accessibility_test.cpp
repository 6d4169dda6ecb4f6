// SPDX-License-Identifier: MIT
#include "platform/linux/accessibility/accessibility.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/linux/testing/private_bus.h"
#include "tests/linux/testing/scripted_application.h"
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

struct Field : ::testing::Test {
  Field() {
    enterSession();
    app = std::make_unique<ScriptedApplication>();
    app->show({});
    access = std::make_unique<LinuxAccessibility>(
        LinuxAccessibility::Display{.mayControl = [] { return true; },
                                    .frontProcess = [this] { return process; },
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
    EXPECT_FALSE(access->focusIsPasswordField());
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

TEST_F(Field, isReplacedInTheUnitsOfItsToolkit) {
  for (const auto& [toolkit, range] : {std::pair("gtk", std::pair(1, 4)), {"GTK", {1, 4}}, {"Qt", {1, 5}}}) {
    SCOPED_TRACE(toolkit);
    restart(selected(u"a\U0001F600kuo", range, toolkit));
    ASSERT_EQ(replace("\U0001F600ש\U0001F600\nש"), 0);
    EXPECT_EQ(app->text(), "a\U0001F600ש\U0001F600\nשo");
    EXPECT_FALSE(app->wasOverrun());
    EXPECT_TRUE(pumpUntil([this] { return app->selections().empty(); }));
  }
}

TEST_F(Field, keepsItsTextWhenTheNewOneDoesNotGoInWhole) {
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

TEST_F(Field, ofAnApplicationThatStopsIsReplacedWhenItGoesOn) {
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

TEST_F(Field, ofAnApplicationThatStopsKeepsItsTextWhenTheNewOneIsCutShort) {
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

TEST_F(Field, ofAnApplicationThatStopsIsNotTouchedAfterTheAgentHasLeft) {
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

TEST_F(Field, isLeftToTheClipboardWhereItCannotBeWrittenTo) {
  const std::pair<const char*, std::function<void(ScriptedField&)>> fields[] = {
      {"another toolkit", [](ScriptedField& field) { field.toolkit = "Chromium"; }},
      {"a paragraph of a document", [](ScriptedField& field) { field.role = kAtspiRoleParagraph; }},
      {"not editable", [](ScriptedField& field) { field.states &= ~kAtspiStateEditable; }},
      {"read-only", [](ScriptedField& field) { field.states |= kAtspiStateReadOnly; }},
      {"text alone", [](ScriptedField& field) { field.interfaces = {AtspiBus::kText}; }},
      {"no states", [](ScriptedField& field) { field.broken = {"GetInterfaces"}; }},
      {"one line of Qt",
       [](ScriptedField& field) {
         field.toolkit = "Qt";
         field.states &= ~kAtspiStateMultiLine;
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

TEST_F(Field, tellsItsSelectionWhenThereIsOne) {
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

TEST_F(Field, tellsItsWholeText) {
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

// ---- Fields that hide their text

TEST_F(Field, forPasswordsIsToldWithoutItsText) {
  ScriptedField password = selected(u"akuo", {0, 4});
  password.role = kAtspiRolePasswordText;
  ScriptedField silent = selected(u"akuo", {0, 4});
  silent.broken = {"GetRole"};
  for (const auto& field : {password, silent}) {
    app->show(field);
    EXPECT_TRUE(access->focusIsPasswordField());
    EXPECT_EQ(element(), nullptr);
    expectNoTextWasRead();
  }
}

TEST_F(Field, thatShowsOneSignOverAndOverIsOneForPasswords) {
  for (const char* sign : {"\u2022", "\u25CF", "\u2731", "\u273A", "*", "#", "-", " ", "\U0001F600"}) {
    SCOPED_TRACE(sign);
    app->show(selected(u"xakuox", {1, 5}));
    primary = std::string(sign) + sign + sign + sign;
    EXPECT_TRUE(access->focusIsPasswordField());
    EXPECT_EQ(element(), nullptr);
    expectNoTextWasRead();
  }
}

TEST_F(Field, withOrdinaryTextIsNotOneForPasswords) {
  app->show(selected(u"xakuox", {1, 5}));
  for (const char* shown : {"akuo", "aaaa", "שששש", "1111", "***", "*****", "***a", "a***", ""}) {
    primary = shown;
    EXPECT_FALSE(access->focusIsPasswordField()) << shown;
  }
  primary.reset();
  EXPECT_FALSE(access->focusIsPasswordField());
  primary = "****";
  app->show(selected(u"xakuox", {5, 5}));
  EXPECT_FALSE(access->focusIsPasswordField()) << "nothing is selected";
}

TEST_F(Field, thatGotTheFocusSinceIsLookedAtToo) {
  app->show(selected(u"akuo", {0, 4}));
  EXPECT_FALSE(access->focusIsPasswordField());
  EXPECT_NE(element(), nullptr);

  EXPECT_FALSE(access->focusIsPasswordField());
  ScriptedField password = selected(u"akuo", {0, 4});
  password.path = "/password";
  password.role = kAtspiRolePasswordText;
  app->show(password);
  EXPECT_EQ(element(), nullptr);
  expectNoTextWasRead();
}

TEST_F(Field, thatBeginsToHideItsTextIsLookedAtAnew) {
  ScriptedField field = selected(u"akuo", {0, 4});
  app->show(field);
  EXPECT_FALSE(access->focusIsPasswordField());
  field.role = kAtspiRolePasswordText;
  app->show(field);
  EXPECT_TRUE(access->focusIsPasswordField());
  EXPECT_EQ(element(), nullptr);
}

TEST_F(Field, ofAnApplicationThatHasStoppedKeepsNobodyWaiting) {
  const std::pair<const char*, bool> methods[] = {{"GetState", false}, {"GetRole", true}};
  for (const auto& [method, isSecure] : methods) {
    SCOPED_TRACE(method);
    ScriptedField field = selected(u"akuo", {0, 4});
    field.stopsBefore = method;
    app->show(field);
    const auto start = Clock::now();
    EXPECT_EQ(access->focusIsPasswordField(), isSecure);
    EXPECT_EQ(element(), nullptr);
    EXPECT_LT(Clock::now() - start, kBounded);
    app->resume();
  }
}

TEST_F(Field, thatIsATerminalIsKnown) {
  ScriptedField terminal = selected(u"akuo", {0, 4});
  terminal.role = kAtspiRoleTerminal;
  app->show(terminal);
  EXPECT_FALSE(access->focusIsPasswordField());
  EXPECT_TRUE(access->focusIsTerminal());
  process.reset();
  EXPECT_FALSE(access->focusIsPasswordField());
  EXPECT_FALSE(access->focusIsTerminal());
}

// ---- Finding it

TEST_F(Field, isFoundInTheProcessInFrontOnly) {
  app->show(selected(u"akuo", {0, 4}));
  EXPECT_NE(element(), nullptr);
  process = 1;
  EXPECT_EQ(element(), nullptr);
}

TEST_F(Field, thatLosesTheFocusForAMomentToTheHotKeyIsFound) {
  for (const std::uint32_t role : {ScriptedField().role, kAtspiRolePasswordText}) {
    ScriptedField field = selected(u"akuo", {0, 4});
    field.role = role;
    field.answersUnfocused = 2;
    app->show(field);
    EXPECT_EQ(access->focusIsPasswordField(), role == kAtspiRolePasswordText);
    EXPECT_EQ(element() != nullptr, role != kAtspiRolePasswordText);
  }
}

TEST_F(Field, withoutTheFocusIsGivenUp) {
  ScriptedField field = selected(u"akuo", {0, 4});
  field.states &= ~kAtspiStateFocused;
  app->show(field);
  const auto start = Clock::now();
  EXPECT_FALSE(access->focusIsPasswordField());
  EXPECT_EQ(element(), nullptr);
  EXPECT_LT(Clock::now() - start, kBounded);
}

TEST_F(Field, isFoundWithoutAskingTheCellsOfTables) {
  constexpr std::size_t kCells = 10000;
  const std::vector<std::string> cells(kCells, "/cell");
  const std::map<std::string, ScriptedObject> window = {
      {ScriptedApplication::kRoot,
       {kAtspiStateShowing, {"/table", "/list", "/modest", "/hidden", "/box"}, std::nullopt}},
      {"/table", {kAtspiStateShowing | kAtspiStateManagesDescendants, {"/cell"}, std::nullopt}},
      {"/list", {kAtspiStateShowing, cells, std::nullopt}},
      {"/modest", {kAtspiStateShowing, cells, 1}},
      {"/hidden", {0, {"/cell"}, std::nullopt}},
      {"/box", {kAtspiStateShowing, {"/field"}, std::nullopt}},
  };
  ScriptedField field = selected(u"akuo", {0, 4});
  field.path = "/other";  // the one that was found is gone
  app->show(field, window);
  EXPECT_FALSE(access->focusIsPasswordField());
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
  EXPECT_NE(elementOfFix(), nullptr);
}

}  // namespace
}  // namespace lexwend::platform
