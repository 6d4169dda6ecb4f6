// SPDX-License-Identifier: MIT
#pragma once

#include "platform/accessibility.h"

namespace lexwend::platform::mac {

/// Asks through AXUIElement. No messaging time-out is set: the system's own applies. Main thread only.
class MacAccessibility : public Accessibility {
 public:
  bool isProcessTrusted() override;
  bool isProcessTrustedWithPrompt() override;
  AccessibilityElementRef createSystemWideElement() override;
  AttributeResult copyAttributeValue(const AccessibilityElementRef& element,
                                     std::string_view attribute) override;
  SettableResult isAttributeSettable(const AccessibilityElementRef& element,
                                     std::string_view attribute) override;
  AccessibilityError setAttributeValue(const AccessibilityElementRef& element, std::string_view attribute,
                                       std::string_view value) override;
};

}  // namespace lexwend::platform::mac
