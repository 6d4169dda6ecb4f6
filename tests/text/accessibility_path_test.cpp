// SPDX-License-Identifier: MIT
#include "text/accessibility_path.h"

#include <gtest/gtest.h>

#include "tests/text/text_fixture.h"

namespace lexwend {
namespace {

using platform::AccessOperation;
using platform::FakeAnswer;

struct AccessibilityPath : TextFixture {
  bool run() { return TextAccess::replaceViaAccessibility(capitals); }
  void expectGivenUp(const std::string& line, const char* text = "akuo") {
    EXPECT_FALSE(run());
    EXPECT_EQ(log(), Lines{line});
    EXPECT_TRUE(seen.empty()) << "the transform was called";
    EXPECT_EQ(field->text(), text);
  }
};

TEST_F(AccessibilityPath, replacesTheSelectionAndSeesTheValueChange) {
  field->setText("say akuo, twice");
  ASSERT_TRUE(field->select("akuo"));
  EXPECT_TRUE(run());
  EXPECT_EQ(field->text(), "say AKUO, twice");
  EXPECT_EQ(log(), Lines{"AX: role=AXTextArea set ok, valueChanged=true (before=15 after=15)"});
}

TEST_F(AccessibilityPath, asksInThisOrder) {
  EXPECT_TRUE(run());
  EXPECT_EQ(
      host.calls().of("accessibility."),
      (Lines{"accessibility.createSystemWideElement", "accessibility.copyAttributeValue AXFocusedUIElement",
             "accessibility.copyAttributeValue AXRole", "accessibility.copyAttributeValue AXSelectedText",
             "accessibility.isAttributeSettable AXSelectedText", "accessibility.copyAttributeValue AXValue",
             "accessibility.setAttributeValue AXSelectedText", "accessibility.copyAttributeValue AXValue"}));
}

TEST_F(AccessibilityPath, roleThatIsMissingMistypedOrFailedIsAQuestionMark) {
  for (const FakeAnswer& answer :
       {FakeAnswer::noValue(), FakeAnswer::otherKind(), FakeAnswer::fails(-25205)}) {
    openFreshField();
    field->answer(AccessOperation::read, "AXRole", answer);
    EXPECT_TRUE(run());
    EXPECT_EQ(log().back(), "AX: role=? set ok, valueChanged=true (before=4 after=4)");
  }
}

TEST_F(AccessibilityPath, selectedTextThatIsMissingOrMistypedShowsCodeZero) {
  field->answer(AccessOperation::read, "AXSelectedText", FakeAnswer::noValue());
  expectGivenUp("AX: role=AXTextArea selectedText unavailable/empty (err=0)");
  openFreshField();
  field->answer(AccessOperation::read, "AXSelectedText", FakeAnswer::otherKind());
  EXPECT_FALSE(run());
  EXPECT_EQ(log().back(), "AX: role=AXTextArea selectedText unavailable/empty (err=0)");
}

TEST_F(AccessibilityPath, countsAreOfPerceivedCharacters) {
  field->setText("שָׁ👨‍👩‍👧\r\n");
  field->selectAll();
  field->answer(AccessOperation::settable, "AXSelectedText", FakeAnswer::refuses());
  expectGivenUp("AX: role=AXTextArea selected=3 chars, not settable (err=0)", "שָׁ👨‍👩‍👧\r\n");
}

TEST_F(AccessibilityPath, valueThatCannotBeReadBeforeIsNotUsed) {
  field->answer(AccessOperation::read, "AXValue", FakeAnswer::fails(-25212));
  expectGivenUp("AX: role=AXTextArea selected=4 chars, value unreadable (err=-25212)");
}

TEST_F(AccessibilityPath, valueThatIsNoTextAfterCountsAsDone) {
  field->answer(AccessOperation::read, "AXValue", FakeAnswer::noValue(), /*after=*/1);
  EXPECT_TRUE(run());
  EXPECT_EQ(log(), Lines{"AX: role=AXTextArea set ok, value unreadable after"});
}

TEST_F(AccessibilityPath, canonicallyEquivalentValuesAreEqual) {
  field->setText("é");
  field->selectAll();
  EXPECT_FALSE(TextAccess::replaceViaAccessibility([](std::string_view) { return std::string("e\u0301"); }));
  EXPECT_EQ(log(), Lines{"AX: role=AXTextArea set ok, valueChanged=false (before=1 after=1)"});
}

TEST_F(AccessibilityPath, onlyTheContentsDecideNotTheCounts) {
  field->setText("ab");
  field->selectAll();
  EXPECT_TRUE(TextAccess::replaceViaAccessibility([](std::string_view) { return std::string("abc"); }));
  EXPECT_EQ(log(), Lines{"AX: role=AXTextArea set ok, valueChanged=true (before=2 after=3)"});
}

TEST_F(AccessibilityPath, hangingApplicationEndsAtTheHostsLimit) {
  field->answer(AccessOperation::read, "AXSelectedText", FakeAnswer::hangs(std::chrono::milliseconds(250)));
  expectGivenUp("AX: role=AXTextArea selectedText unavailable/empty (err=-25204)");
  EXPECT_EQ(host.clock().now(), std::chrono::milliseconds(250));
}

}  // namespace
}  // namespace lexwend
