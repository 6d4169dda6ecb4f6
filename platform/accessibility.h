// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <variant>

namespace lexwend::platform {

/// A user-interface element of some application. Opaque; alive as long as any copy of its reference.
class AccessibilityElement {
 public:
  virtual ~AccessibilityElement() = default;
};
using AccessibilityElementRef = std::shared_ptr<const AccessibilityElement>;

/// The system's own error code; 0 is success. The program only prints it.
using AccessibilityError = std::int32_t;

/// A value that is neither text nor an element.
struct OtherAccessibilityValue {
  bool operator==(const OtherAccessibilityValue&) const = default;
};
/// std::monostate: no value. Text is UTF-8.
using AccessibilityValue =
    std::variant<std::monostate, OtherAccessibilityValue, std::string, AccessibilityElementRef>;

struct AttributeResult {
  AccessibilityError error = 0;
  AccessibilityValue value;
};
struct SettableResult {
  AccessibilityError error = 0;
  bool settable = false;
};

/// Attribute names, as the system spells them.
inline constexpr std::string_view kFocusedUIElementAttribute = "AXFocusedUIElement";
inline constexpr std::string_view kRoleAttribute = "AXRole";
inline constexpr std::string_view kSelectedTextAttribute = "AXSelectedText";
inline constexpr std::string_view kValueAttribute = "AXValue";

/// Reads and writes the elements of other applications. Main thread only. A call that takes an element blocks
/// until the application answers. When the deadline passes first, the call returns an error. The deadline is
/// the system's own on macOS. On Linux it is 0.25 s for a call and 0.7 s for all calls of one fix.
class Accessibility {
 public:
  virtual ~Accessibility() = default;
  /// True when this process may use the interface. Never prompts.
  virtual bool isProcessTrusted() = 0;
  /// The same answer. When this process is not trusted, the system shows its own prompt if it has one. Does
  /// not wait for the user.
  virtual bool isProcessTrustedWithPrompt() = 0;
  /// The element of the whole system. Its focused element is the one that has the keyboard.
  virtual AccessibilityElementRef createSystemWideElement() = 0;
  virtual AttributeResult copyAttributeValue(const AccessibilityElementRef& element,
                                             std::string_view attribute) = 0;
  virtual SettableResult isAttributeSettable(const AccessibilityElementRef& element,
                                             std::string_view attribute) = 0;
  /// Sets a text attribute (UTF-8).
  virtual AccessibilityError setAttributeValue(const AccessibilityElementRef& element,
                                               std::string_view attribute, std::string_view value) = 0;
};

/// The service of the installed host.
Accessibility& accessibility();

}  // namespace lexwend::platform
