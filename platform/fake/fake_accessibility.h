// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/accessibility.h"
#include "platform/fake/fake_apps.h"
#include "platform/fake/fake_system.h"

namespace lexwend::platform {

/// Accessibility of the applications in memory. Every answer is the truth unless a field was told to answer
/// otherwise. Without trust every call fails, as on the real system.
class FakeAccessibility : public Accessibility {
 public:
  FakeAccessibility(FakeSystem& system, FakeApps& apps) : system_(system), apps_(apps) {}

  bool isProcessTrusted() override;
  bool isProcessTrustedWithPrompt() override;
  AccessibilityElementRef createSystemWideElement() override;
  AttributeResult copyAttributeValue(const AccessibilityElementRef& element,
                                     std::string_view attribute) override;
  SettableResult isAttributeSettable(const AccessibilityElementRef& element,
                                     std::string_view attribute) override;
  AccessibilityError setAttributeValue(const AccessibilityElementRef& element, std::string_view attribute,
                                       std::string_view value) override;

  // Controls of a test.
  void setTrusted(bool trusted) { trusted_ = trusted; }
  bool trusted() const { return trusted_; }
  /// The user grants the permission after that time.
  void grantAfter(std::chrono::milliseconds delay);
  /// How often the system showed its prompt.
  int prompts() const { return prompts_; }
  /// How often any element was read, written or asked whether it can be written.
  int elementCalls() const { return elementCalls_; }
  /// The answer to the next questions for the focused element, in place of the truth; nothing brings the
  /// truth back. An answer that nobody asked for is a complaint.
  void answerFocus(std::optional<FakeAnswer> answer);
  std::vector<std::string> unused() const;

 private:
  FakeSystem& system_;
  FakeApps& apps_;
  AccessibilityElementRef systemWide_;
  std::optional<FakeAnswer> focusAnswer_;
  bool focusAnswerUsed_ = false;
  bool trusted_ = true;
  int prompts_ = 0;
  int elementCalls_ = 0;
};

}  // namespace lexwend::platform
