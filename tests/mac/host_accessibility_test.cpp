// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>

#include "tests/mac/host_fixture.h"

namespace lexwend::platform::mac {
namespace {

namespace dbl = doubles::accessibility;

constexpr std::int32_t kCannotComplete = -25204;
constexpr std::int32_t kUnsupported = -25205;

struct MacAccessibilityService : OnMac {
  Accessibility& service = host->accessibility();
  AccessibilityElementRef systemWide = service.createSystemWideElement();

  void TearDown() override {
    systemWide = nullptr;
    OnMac::TearDown();
  }
  static dbl::Attribute answering(const doubles::Value& value) {
    dbl::Attribute attribute;
    attribute.replies = {{.error = 0, .value = value}};
    return attribute;
  }
  static dbl::Attribute settable(std::function<void(const std::string&)> onSet) {
    dbl::Attribute attribute;
    attribute.isSettable = true;
    attribute.onSet = std::move(onSet);
    return attribute;
  }
  AccessibilityElementRef focused() {
    dbl::setFocused({.error = 0, .value = {}, .isElement = true});
    return std::get<AccessibilityElementRef>(
        service.copyAttributeValue(systemWide, kFocusedUIElementAttribute).value);
  }
};

TEST_F(MacAccessibilityService, tellsWhetherItIsTrustedWithoutAsking) {
  dbl::setTrusted(false);
  EXPECT_FALSE(service.isProcessTrusted());
  dbl::setTrusted(true);
  EXPECT_TRUE(service.isProcessTrusted());
  EXPECT_EQ(dbl::promptsShown(), 0);
}

TEST_F(MacAccessibilityService, promptsOnlyWhenItIsNotTrusted) {
  dbl::setTrusted(false);
  EXPECT_FALSE(service.isProcessTrustedWithPrompt());
  EXPECT_EQ(dbl::promptsShown(), 1);
  EXPECT_THAT(argumentsOf("AXIsProcessTrustedWithOptions"),
              ::testing::HasSubstr("AXTrustedCheckOptionPrompt"));
  dbl::setTrusted(true);
  EXPECT_TRUE(service.isProcessTrustedWithPrompt());
  EXPECT_EQ(dbl::promptsShown(), 1);
}

TEST_F(MacAccessibilityService, findsTheFocusedElement) {
  EXPECT_NE(focused(), nullptr);
}

TEST_F(MacAccessibilityService, passesOnTheErrorWhenNothingHasTheFocus) {
  dbl::setFocused({.error = kCannotComplete, .value = {}});
  const AttributeResult result = service.copyAttributeValue(systemWide, kFocusedUIElementAttribute);
  EXPECT_EQ(result.error, kCannotComplete);
  EXPECT_EQ(result.value, AccessibilityValue());
}

TEST_F(MacAccessibilityService, tellsAMissingValueFromOneOfAnotherType) {
  dbl::setFocused({.error = 0, .value = {}});
  EXPECT_EQ(service.copyAttributeValue(systemWide, kFocusedUIElementAttribute).value, AccessibilityValue());
  const std::vector<doubles::Value> others = {
      true, std::int64_t{1}, 1.5, std::vector<std::string>{"text"}, doubles::Bytes{}, doubles::NullObject{}};
  for (const doubles::Value& other : others) {
    dbl::setFocused({.error = 0, .value = other});
    const AttributeResult result = service.copyAttributeValue(systemWide, kFocusedUIElementAttribute);
    EXPECT_EQ(result.error, 0);
    EXPECT_EQ(result.value, AccessibilityValue(OtherAccessibilityValue{})) << other.index();
  }
}

TEST_F(MacAccessibilityService, ignoresAValueThatComesWithAnError) {
  dbl::setFocused({.error = kCannotComplete, .value = std::string("left over")});
  EXPECT_EQ(service.copyAttributeValue(systemWide, kFocusedUIElementAttribute).value, AccessibilityValue());
}

TEST_F(MacAccessibilityService, readsTextOfEveryPlane) {
  const AccessibilityElementRef element = focused();
  dbl::setAttribute("AXSelectedText", answering(std::string("שלום 😀\nשורה")));
  EXPECT_EQ(service.copyAttributeValue(element, kSelectedTextAttribute).value,
            AccessibilityValue(std::string("שלום 😀\nשורה")));
  dbl::setAttribute("AXSelectedText", answering(std::string()));
  EXPECT_EQ(service.copyAttributeValue(element, kSelectedTextAttribute).value,
            AccessibilityValue(std::string()));
}

TEST_F(MacAccessibilityService, readsHalfASurrogatePairAsTheReplacementCharacter) {
  const AccessibilityElementRef element = focused();
  const auto read = [&](const std::u16string& units) {
    dbl::setAttribute("AXSelectedText", answering(units));
    return std::get<std::string>(service.copyAttributeValue(element, kSelectedTextAttribute).value);
  };
  EXPECT_EQ(read(u"a\xD83D"
                 u"b"),
            "a\uFFFD"
            "b");
  EXPECT_EQ(read(u"\xDE00\xD83D"), "\uFFFD\uFFFD");
  EXPECT_EQ(read(u"\x7F\x80\x7FF\x800\xFFFF\xD800\xDC00\xDBFF\xDFFF"),
            "\x7F\u0080\u07FF\u0800\uFFFF\U00010000\U0010FFFF");
  EXPECT_EQ(read(std::u16string(u"a\0b", 3)), std::string("a\0b", 3));
  // A pair at the very beginning, and neighbours of the surrogates beside them.
  EXPECT_EQ(read(u"\xD83D\xDE00"), "😀");
  EXPECT_EQ(read(u"\xD7FF\xDC00"), "\uD7FF\uFFFD");
  EXPECT_EQ(read(u"\xDC00\xDC00"), "\uFFFD\uFFFD");
  EXPECT_EQ(read(u"\xD800\xE000"), "\uFFFD\uE000");
}

TEST_F(MacAccessibilityService, asksForTheAttributeThatItIsTold) {
  const AccessibilityElementRef element = focused();
  dbl::setAttribute("AXRole", answering(std::string("AXTextArea")));
  EXPECT_EQ(service.copyAttributeValue(element, kRoleAttribute).value,
            AccessibilityValue(std::string("AXTextArea")));
  EXPECT_EQ(service.copyAttributeValue(element, kValueAttribute).error, kUnsupported);
}

TEST_F(MacAccessibilityService, tellsWhetherAnAttributeCanBeSet) {
  const AccessibilityElementRef element = focused();
  dbl::Attribute attribute;
  attribute.isSettable = true;
  dbl::setAttribute("AXSelectedText", attribute);
  EXPECT_TRUE(service.isAttributeSettable(element, kSelectedTextAttribute).settable);
  attribute.isSettable = false;
  dbl::setAttribute("AXSelectedText", attribute);
  const SettableResult no = service.isAttributeSettable(element, kSelectedTextAttribute);
  EXPECT_EQ(no.error, 0);
  EXPECT_FALSE(no.settable);
  attribute.settableError = kCannotComplete;
  dbl::setAttribute("AXSelectedText", attribute);
  EXPECT_EQ(service.isAttributeSettable(element, kSelectedTextAttribute).error, kCannotComplete);
}

TEST_F(MacAccessibilityService, setsTextOfEveryPlane) {
  const AccessibilityElementRef element = focused();
  std::string set;
  dbl::setAttribute("AXSelectedText", settable([&](const std::string& text) { set = text; }));
  EXPECT_EQ(service.setAttributeValue(element, kSelectedTextAttribute, "שלום 😀"), 0);
  EXPECT_EQ(set, "שלום 😀");
}

TEST_F(MacAccessibilityService, passesOnTheErrorOfASet) {
  const AccessibilityElementRef element = focused();
  dbl::Attribute attribute = settable({});
  attribute.setError = kCannotComplete;
  dbl::setAttribute("AXSelectedText", attribute);
  EXPECT_EQ(service.setAttributeValue(element, kSelectedTextAttribute, "text"), kCannotComplete);
}

TEST_F(MacAccessibilityService, neverSetsWhatIsNoText) {
  const AccessibilityElementRef element = focused();
  bool set = false;
  dbl::setAttribute("AXSelectedText", settable([&](const std::string&) { set = true; }));
  EXPECT_NE(service.setAttributeValue(element, kSelectedTextAttribute, "\xFF"), 0);
  EXPECT_FALSE(set);
}

TEST_F(MacAccessibilityService, asksForSecureInputAnewEachTime) {
  doubles::secure_input::setEnabled(true);
  EXPECT_TRUE(host->secureInput().isSecureEventInputEnabled());
  doubles::secure_input::setEnabled(false);
  EXPECT_FALSE(host->secureInput().isSecureEventInputEnabled());
}

}  // namespace
}  // namespace lexwend::platform::mac
