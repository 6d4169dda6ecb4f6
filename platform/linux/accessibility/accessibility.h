// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/accessibility.h"
#include "platform/linux/accessibility/atspi_bus.h"
#include "platform/linux/accessibility/field.h"
#include "platform/linux/accessibility/focus_finder.h"
#include "platform/linux/accessibility/toolkit.h"

namespace lexwend::platform {

class AtspiElement;

/// Accessibility over AT-SPI2. Offered to the agent are only fields whose toolkit is known to write what it
/// is told and to count as this code does; every other field answers with an error and is left to the
/// clipboard.
///
/// A call waits at most 0.25 s for the application, one that writes at most 0.7 s, and all calls of a fix
/// together at most 0.7 s. A fix begins with focusIsSecure(), or with the question for the focused element
/// when there was none in the last 1.5 s. What an application has answered is kept for the fix and not asked
/// twice, except where an answer may have changed and matters: whether the field still has the keyboard, what
/// it is, what is selected, and its text around a write. With the focus known a fix waits five times.
class LinuxAccessibility final : public Accessibility {
 public:
  /// What this service needs of the display.
  struct Display {
    std::function<bool()> mayControl;  ///< keys, selections and layouts of the session can be used
    /// Owner of the window that has the keyboard. Where the display does not tell, that is the owner of the
    /// window that the bus knows for active.
    std::function<std::optional<std::uint32_t>()> frontProcess;
    /// The class of that window.
    std::function<std::optional<std::string>()> frontWindowClass;
    /// PRIMARY as text, when it is short and at hand. Waits for a bounded time.
    std::function<std::optional<std::string>()> primarySelection;
    /// Whether the display tells which window has the keyboard.
    std::function<bool()> tellsFront = [] { return true; };
  };

  explicit LinuxAccessibility(Display display);

  /// Connects in the background; until then no element is found.
  void start() { bus_.start(); }
  bool isConnected() const { return bus_.isConnected(); }

  /// Whether the focused field is one for passwords or a terminal. Asks the field for its role and for the
  /// extent of its selection, never for its text. A field with the role of plain text may yet hide its own:
  /// it does when PRIMARY, which is what it shows of its selection, is one sign over and over, no letter or
  /// digit, and as long as the selection. What was read of PRIMARY goes no further. A field that does not
  /// tell its role counts as one that hides its text. False when no field is found.
  bool focusIsSecure();
  /// Whether nothing was selected in the field that the last fix has looked at, told by a toolkit that is
  /// known to tell the truth about that: then a copy shortcut copies nothing, or something else, as the line
  /// of the caret. Where it looked so, the field is asked once more after a moment, because the keys that
  /// select may still be on their way to the application: then it waits for as long as any other question.
  bool selectionIsKnownEmpty();
  /// How often the calls of the last fix waited for an application.
  int waitsOfFix() const { return bus_.waitsOfRound(); }

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
  std::optional<Field> focusedField();
  bool isSecure(const Field& field);
  bool showsAMask(const TextRange& selection);
  void noteSelection(const Field& field);
  AttributeResult focusedElement();
  AttributeResult selectedText(const AtspiElement& element);
  AttributeResult wholeText(const AtspiElement& element);

  Display display_;
  AtspiBus bus_;
  FocusFinder finder_;
  std::optional<Field> checked_;  // is not secure, and nobody has asked for it since
  bool selectionIsKnownEmpty_ = false;
};

}  // namespace lexwend::platform
