// SPDX-License-Identifier: MIT
#include "platform/fake/fake_accessibility.h"

#include <string>
#include <utility>

namespace lexwend::platform {
namespace {

class SystemWideElement : public AccessibilityElement {};

std::string call(const char* operation, std::string_view attribute) {
  return std::string("accessibility.") + operation + " " + std::string(attribute);
}

/// Only this host hands out fields, so every element is a field.
FakeField* fieldOf(const AccessibilityElementRef& element) {
  return const_cast<FakeField*>(dynamic_cast<const FakeField*>(element.get()));
}

AttributeResult resultOf(const FakeAnswer& answer) {
  switch (answer.kind) {
    case FakeAnswer::Kind::fails:
      return {answer.code, {}};
    case FakeAnswer::Kind::noValue:
    case FakeAnswer::Kind::refuses:
    case FakeAnswer::Kind::lies:
      return {0, {}};
    case FakeAnswer::Kind::otherKind:
      return {0, OtherAccessibilityValue{}};
    case FakeAnswer::Kind::text:
      return {0, answer.value};
  }
  return {};
}

}  // namespace

bool FakeAccessibility::isProcessTrusted() {
  system_.called("accessibility.isProcessTrusted");
  return trusted_;
}

bool FakeAccessibility::isProcessTrustedWithPrompt() {
  system_.called("accessibility.isProcessTrustedWithPrompt");
  if (!trusted_) ++prompts_;
  return trusted_;
}

AccessibilityElementRef FakeAccessibility::createSystemWideElement() {
  system_.called("accessibility.createSystemWideElement");
  if (!systemWide_) systemWide_ = std::make_shared<SystemWideElement>();
  return systemWide_;
}

AttributeResult FakeAccessibility::copyAttributeValue(const AccessibilityElementRef& element,
                                                      std::string_view attribute) {
  system_.called(call("copyAttributeValue", attribute));
  ++elementCalls_;
  if (!trusted_) return {kAccessibilityApiDisabled, {}};
  if (element && element == systemWide_) {
    if (attribute != kFocusedUIElementAttribute) return {kAccessibilityAttributeUnsupported, {}};
    if (focusAnswer_) {
      focusAnswerUsed_ = true;
      system_.clock.sleep(focusAnswer_->delay);
      return resultOf(*focusAnswer_);
    }
    const auto focus = apps_.focus();
    if (!focus) return {kAccessibilityNoValue, {}};
    return {0, AccessibilityElementRef(focus)};
  }
  FakeField* field = fieldOf(element);
  if (field == nullptr) return {kAccessibilityInvalidElement, {}};
  if (const auto answer = field->preparedAnswer(AccessOperation::read, attribute)) {
    system_.clock.sleep(answer->delay);
    return resultOf(*answer);
  }
  if (attribute == kRoleAttribute) return {0, field->role};
  if (attribute == kSelectedTextAttribute) return {0, field->selectedText()};
  if (attribute == kValueAttribute) return {0, field->text()};
  return {kAccessibilityAttributeUnsupported, {}};
}

SettableResult FakeAccessibility::isAttributeSettable(const AccessibilityElementRef& element,
                                                      std::string_view attribute) {
  system_.called(call("isAttributeSettable", attribute));
  ++elementCalls_;
  if (!trusted_) return {kAccessibilityApiDisabled, false};
  FakeField* field = fieldOf(element);
  if (field == nullptr) return {kAccessibilityInvalidElement, false};
  if (const auto answer = field->preparedAnswer(AccessOperation::settable, attribute)) {
    system_.clock.sleep(answer->delay);
    return {answer->kind == FakeAnswer::Kind::fails ? answer->code : 0, false};
  }
  return {0, field->editable && attribute == kSelectedTextAttribute};
}

AccessibilityError FakeAccessibility::setAttributeValue(const AccessibilityElementRef& element,
                                                        std::string_view attribute, std::string_view value) {
  system_.called(call("setAttributeValue", attribute));
  ++elementCalls_;
  if (!trusted_) return kAccessibilityApiDisabled;
  FakeField* field = fieldOf(element);
  if (field == nullptr) return kAccessibilityInvalidElement;
  if (const auto answer = field->preparedAnswer(AccessOperation::write, attribute)) {
    system_.clock.sleep(answer->delay);
    return answer->kind == FakeAnswer::Kind::fails ? answer->code : 0;
  }
  if (attribute != kSelectedTextAttribute || !field->editable) return kAccessibilityAttributeUnsupported;
  field->replaceSelection(value);
  return 0;
}

void FakeAccessibility::answerFocus(std::optional<FakeAnswer> answer) {
  for (auto& complaint : unused()) system_.complain(std::move(complaint));
  focusAnswer_ = std::move(answer);
  focusAnswerUsed_ = false;
}

std::vector<std::string> FakeAccessibility::unused() const {
  if (!focusAnswer_ || focusAnswerUsed_) return {};
  return {"the answer prepared for the focused element was never asked for"};
}

void FakeAccessibility::grantAfter(std::chrono::milliseconds delay) {
  system_.clock.systemDoes(delay, [this] { trusted_ = true; });
}

}  // namespace lexwend::platform
