// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/accessibility.h"
#include "platform/linux/accessibility/atspi_bus.h"
#include "platform/linux/accessibility/focus_finder.h"
#include "platform/linux/accessibility/secure_input.h"

namespace lexwend::platform {

/// A replacement under way.
struct Replacement;

/// Accessibility over AT-SPI2. Offered to the agent are only fields whose toolkit is known to write what it
/// is told and to count as this code does; every other field answers with an error and is left to the
/// clipboard. No call waits longer than the bus's round, which begins with the question for the focused
/// element or for a password field.
class LinuxAccessibility final : public Accessibility, public FocusedRole {
 public:
  /// What this service needs of the display.
  struct Display {
    std::function<bool()> mayControl;  ///< keys, selections and layouts of the session can be used
    std::function<std::optional<std::uint32_t>()>
        frontProcess;  ///< owner of the window that has the keyboard
    std::function<std::optional<std::string>()>
        primarySelection;  ///< PRIMARY as text, when it is short and at hand
  };

  explicit LinuxAccessibility(Display display);

  /// Connects in the background; until then no element is found.
  void start() { bus_.start(); }

  /// Asks the field for its role and for the extent of its selection, never for its text. A field with the
  /// role of plain text may yet hide its own: it does when PRIMARY, which is what it shows of its selection,
  /// is one sign over and over, no letter or digit, and as long as the selection. What was read of PRIMARY
  /// goes no further. A field that does not tell its role counts as one that hides its text. Begins a round
  /// of calls.
  bool focusIsPasswordField() override;
  /// Whether the field that was last looked at for its role is a terminal, on its own or inside a window of
  /// another kind. Asks nobody.
  bool focusIsTerminal() const { return focusIsTerminal_; }

  bool isProcessTrusted() override;
  bool isProcessTrustedWithPrompt() override;
  AccessibilityElementRef createSystemWideElement() override;
  AttributeResult copyAttributeValue(const AccessibilityElementRef& element,
                                     std::string_view attribute) override;
  SettableResult isAttributeSettable(const AccessibilityElementRef& element,
                                     std::string_view attribute) override;
  AccessibilityError setAttributeValue(const AccessibilityElementRef& element, std::string_view attribute,
                                       std::string_view value) override;

 private:
  struct Range {
    std::int32_t start = 0, end = 0;  // in the toolkit's own units
  };
  struct Selections {
    std::optional<std::int32_t> count;
    std::optional<Range> only;  // where there is exactly one
    std::optional<std::int32_t> lengthOfField;
  };

  std::optional<AtspiObject> focusedObject();
  bool hidesItsText(const AtspiObject& object);
  AttributeResult focusedElement();
  AttributeResult role(const AtspiObject& object);
  Selections selections(const AtspiObject& object);
  AttributeResult selectedText(const AtspiObject& object);
  AttributeResult text(const AtspiObject& object, Range range);
  AttributeResult wholeText(const AtspiObject& object);
  /// Ends a replacement whose insertion timed out, when the application has come to it.
  void replaceOnceInserted(const Replacement& wanted);

  Display display_;
  AtspiBus bus_;
  FocusFinder finder_;
  std::optional<AtspiObject> checked_;  // does not hide its text, and nobody has asked for it since
  bool focusIsTerminal_ = false;
};

}  // namespace lexwend::platform
