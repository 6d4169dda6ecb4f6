// SPDX-License-Identifier: MIT
#include "platform/accessibility.h"
#include "platform/secure_input.h"
#include "tests/contract/contract_test.h"

namespace lexwend::contract {
namespace {

using platform::AccessibilityElementRef;

class AccessibilityContract : public ContractTest {
 protected:
  platform::Accessibility& access() { return host().accessibility(); }
  /// Null when nothing has the focus.
  AccessibilityElementRef focused() {
    const auto result =
        access().copyAttributeValue(access().createSystemWideElement(), platform::kFocusedUIElementAttribute);
    const auto* element = std::get_if<AccessibilityElementRef>(&result.value);
    return result.error == 0 && element != nullptr ? *element : nullptr;
  }
  AccessibilityElementRef focusedEditor(std::string_view text) {
    underTest->openEditor(text);
    AccessibilityElementRef element;
    underTest->waitUntil([&] { return (element = focused()) != nullptr; });
    return element;
  }
  std::string textOf(const AccessibilityElementRef& element, std::string_view attribute) {
    const auto result = access().copyAttributeValue(element, attribute);
    const auto* text = std::get_if<std::string>(&result.value);
    return result.error == 0 && text != nullptr ? *text : "(no text)";
  }
};

TEST_F(AccessibilityContract, aTrustedProcessIsTrustedAndNeverPrompted) {
  EXPECT_TRUE(access().isProcessTrusted());
  EXPECT_TRUE(access().isProcessTrustedWithPrompt());
  EXPECT_EQ(underTest->prompts(), 0);
}

TEST_F(AccessibilityContract, withNothingInFrontThereIsNoFocusedElement) {
  EXPECT_EQ(focused(), nullptr);
}

TEST_F(AccessibilityContract, theFocusedElementTellsRoleSelectionAndValue) {
  const auto element = focusedEditor("akuo nv");
  ASSERT_NE(element, nullptr);
  EXPECT_NE(textOf(element, platform::kRoleAttribute), "(no text)");
  EXPECT_NE(textOf(element, platform::kRoleAttribute), "");
  EXPECT_EQ(textOf(element, platform::kSelectedTextAttribute), "akuo nv");
  EXPECT_EQ(textOf(element, platform::kValueAttribute), "akuo nv");
}

TEST_F(AccessibilityContract, settingTheSelectedTextReplacesTheSelection) {
  const auto element = focusedEditor("akuo");
  ASSERT_NE(element, nullptr);
  const auto settable = access().isAttributeSettable(element, platform::kSelectedTextAttribute);
  EXPECT_EQ(settable.error, 0);
  EXPECT_TRUE(settable.settable);
  EXPECT_EQ(access().setAttributeValue(element, platform::kSelectedTextAttribute, "שלום"), 0);
  EXPECT_TRUE(underTest->waitUntil([&] { return underTest->editorText() == "שלום"; }));
  EXPECT_EQ(textOf(element, platform::kValueAttribute), "שלום");
}

TEST_F(AccessibilityContract, anAttributeThatNoElementHasIsAnErrorOrNothing) {
  const auto element = focusedEditor("akuo");
  ASSERT_NE(element, nullptr);
  const auto result = access().copyAttributeValue(element, "AXLexwendNowhere");
  EXPECT_TRUE(result.error != 0 || std::holds_alternative<std::monostate>(result.value));
  EXPECT_FALSE(access().isAttributeSettable(element, "AXLexwendNowhere").settable);
}

TEST_F(AccessibilityContract, onlyTheCallWithThePromptPromptsAndOnlyWithoutTrust) {
  const bool isNeeded = underTest->withdrawTrust();
  EXPECT_EQ(access().isProcessTrusted(), !isNeeded);
  EXPECT_EQ(underTest->prompts(), 0);
  EXPECT_EQ(access().isProcessTrustedWithPrompt(), !isNeeded);
  EXPECT_EQ(underTest->prompts(), isNeeded ? 1 : 0);
}

TEST_F(AccessibilityContract, aCallThatIsNotAnsweredEndsAsAnErrorAndChangesNothing) {
  const auto element = focusedEditor("akuo");
  ASSERT_NE(element, nullptr);
  underTest->editorHangs();
  const auto selected = access().copyAttributeValue(element, platform::kSelectedTextAttribute);
  EXPECT_NE(selected.error, 0);
  EXPECT_EQ(selected.value, platform::AccessibilityValue());
  const auto settable = access().isAttributeSettable(element, platform::kSelectedTextAttribute);
  EXPECT_NE(settable.error, 0);
  EXPECT_FALSE(settable.settable);
  EXPECT_NE(access().setAttributeValue(element, platform::kSelectedTextAttribute, "שלום"), 0);
  EXPECT_EQ(underTest->editorText(), "akuo");
}

class SecureInputContract : public ContractTest {};

TEST_F(SecureInputContract, isOnInAPasswordFieldOnly) {
  auto& secure = host().secureInput();
  EXPECT_FALSE(secure.isSecureEventInputEnabled());
  underTest->openEditor("akuo");
  EXPECT_TRUE(underTest->waitUntil([&] { return !secure.isSecureEventInputEnabled(); }));
  underTest->focusPasswordField();
  EXPECT_TRUE(underTest->waitUntil([&] { return secure.isSecureEventInputEnabled(); }));
}

}  // namespace
}  // namespace lexwend::contract
