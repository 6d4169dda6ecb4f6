// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/accessibility.h"
#include "platform/linux/atspi_bus.h"
#include "platform/linux/focus_finder.h"
#include "platform/linux/secure_input.h"
#include "platform/linux/x11_connection.h"

namespace lexwend::platform {

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
  /// Over that display; without one (null) nothing is trusted and no element is found.
  explicit LinuxAccessibility(const std::shared_ptr<X11Connection>& x11);

  /// Connects in the background; until then no element is found.
  void start() { bus_.start(); }

  /// Whether the focused field hides what is typed into it. Asks for its role and the extent of its
  /// selection, never for its text. Begins a round of calls.
  bool focusIsPasswordField() override;

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

  std::optional<AtspiObject> focusedObject();
  AttributeResult focusedElement();
  std::optional<std::uint32_t> roleNumber(const AtspiObject& object);
  AttributeResult role(const AtspiObject& object);
  AttributeResult selectedText(const AtspiObject& object);
  AttributeResult text(const AtspiObject& object, Range range);
  std::optional<std::int32_t> selectionCount(const AtspiObject& object);
  std::optional<Range> onlySelection(const AtspiObject& object);

  Display display_;
  AtspiBus bus_;
  FocusFinder finder_;
};

}  // namespace lexwend::platform
