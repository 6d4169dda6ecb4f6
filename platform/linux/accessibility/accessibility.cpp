// SPDX-License-Identifier: MIT
#include "platform/linux/accessibility/accessibility.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <string>
#include <utility>
#include <vector>

#include <unicode/uchar.h>

#include "platform/linux/accessibility/replacement.h"
#include "platform/linux/session/end_request.h"
#include "platform/linux/session/foreign_text.h"

namespace lexwend::platform {

/// A field as it was when it was found to have the keyboard.
class AtspiElement final : public AccessibilityElement {
 public:
  AtspiElement(Field field, Toolkit toolkit, bool isSettable)
      : field_(std::move(field)), toolkit_(toolkit), isSettable_(isSettable) {}
  const Field& field() const { return field_; }
  Toolkit toolkit() const { return toolkit_; }
  bool isSettable() const { return isSettable_; }

  // What was asked along with something else.
  mutable std::optional<std::string> selectedText;
  mutable std::optional<std::string> wholeText;  // for the next question for it

 private:
  Field field_;
  Toolkit toolkit_;
  bool isSettable_;
};

namespace {

// The codes that macOS gives for the same troubles, so that one log reads like the other.
constexpr AccessibilityError kCannotComplete = -25204;
constexpr AccessibilityError kAttributeUnsupported = -25205;
constexpr AccessibilityError kNoValue = -25212;

// Keys that were pressed right before the hot key reach an application within some milliseconds; on a busy
// machine a question on the bus was seen to overtake them.
constexpr std::chrono::milliseconds kKeysArrive{80};

class SystemWideElement final : public AccessibilityElement {};

bool hasRole(const Field& field, AtspiRole role) {
  return field.role == static_cast<std::uint32_t>(role);
}

/// Whether this may be what a toolkit shows instead of hidden characters: one sign over and over. Programs
/// choose it themselves; none was seen to choose a letter or a digit, which people do select.
bool mayBeMask(const icu::UnicodeString& text) {
  const UChar32 sign = text.char32At(0);
  for (std::int32_t i = 0; i < text.length(); i = text.moveIndex32(i, 1)) {
    if (text.char32At(i) != sign) return false;
  }
  return !text.isEmpty() && u_isalnum(sign) == 0;
}

/// Editors with an undo of their own that does not bring back for sure what was replaced through this
/// interface. What is pasted they do undo.
bool undoesOnlyWhatIsPasted(const std::optional<std::string>& windowClass) {
  constexpr std::array<std::string_view, 2> kClasses = {"L3afpad", "Bluefish"};
  return windowClass && std::find(kClasses.begin(), kClasses.end(), *windowClass) != kClasses.end();
}

bool canBeReplaced(const Field& field, Toolkit toolkit) {
  if (toolkit == Toolkit::unknown || !field.hasEditableText) return false;
  // One paragraph of a document knows its own part of a selection only; the rest would stay as it is.
  if (!field.role || hasRole(field, ATSPI_ROLE_PARAGRAPH)) return false;
  // Into a field of one line Qt inserts by setting its whole text anew: what the user could undo is gone, and
  // the program is not told that its user edited it.
  if (toolkit == Toolkit::qt && !field.has(ATSPI_STATE_MULTI_LINE)) return false;
  return field.has(ATSPI_STATE_EDITABLE) && !field.has(ATSPI_STATE_READ_ONLY);
}

/// Whether one end lies inside a pair of UTF-16 units. Half a character cannot be told over the bus, so it
/// could not be given back. With code points for units there is no such place.
bool cutsACharacter(const TextRange& range, const icu::UnicodeString& whole, Toolkit toolkit) {
  const auto isInside = [&whole](std::int32_t at) { return whole.getChar32Limit(at) != at; };
  return toolkit == Toolkit::qt && (isInside(range.start) || isInside(range.end));
}

}  // namespace

LinuxAccessibility::LinuxAccessibility(Display display) : display_(std::move(display)), finder_(bus_) {}

bool LinuxAccessibility::isProcessTrusted() {
  return display_.mayControl();
}

bool LinuxAccessibility::isProcessTrustedWithPrompt() {
  bus_.start();  // switches the session's accessibility on; there is nothing that the user would have to
                 // grant
  return isProcessTrusted();
}

AccessibilityElementRef LinuxAccessibility::createSystemWideElement() {
  return std::make_shared<const SystemWideElement>();
}

std::optional<Field> LinuxAccessibility::focusedField() {
  if (!bus_.isConnected()) {
    bus_.start();  // for the next time
    return std::nullopt;
  }
  const auto process = display_.tellsFront() ? display_.frontProcess() : finder_.activeProcess();
  if (!process) return std::nullopt;
  // What was looked at a moment ago is most likely still the one.
  if (checked_ && bus_.processOf(checked_->object.bus) == process) {
    if (auto field = finder_.stillFocused(checked_->object)) return field;
  }
  return finder_.focusedText(*process);
}

bool LinuxAccessibility::focusIsSecure() {
  bus_.beginRound();
  checked_.reset();
  selectionIsKnownEmpty_ = false;
  const auto field = focusedField();
  if (!field) return false;
  if (isSecure(*field)) return true;
  noteSelection(*field);
  checked_ = field;
  return false;
}

bool LinuxAccessibility::isSecure(const Field& field) {
  if (!field.role || hasRole(field, ATSPI_ROLE_PASSWORD_TEXT) || hasRole(field, ATSPI_ROLE_TERMINAL)) {
    return true;
  }
  return field.selection && !field.selection->isEmpty() && showsAMask(*field.selection);
}

/// A GTK entry that merely hides its text may call itself plain text, yet puts what it shows into PRIMARY.
/// PRIMARY may be stale, so it counts only when it is as long as what is selected.
bool LinuxAccessibility::showsAMask(const TextRange& selection) {
  const auto primary = display_.primarySelection();
  if (!primary) return false;
  const icu::UnicodeString shown = utf16(*primary);
  return mayBeMask(shown) && shown.countChar32() == selection.end - selection.start;
}

void LinuxAccessibility::noteSelection(const Field& field) {
  selectionIsKnownEmpty_ = field.hasNothingSelected() && field.has(ATSPI_STATE_EDITABLE) &&
                           toolkitNamed(bus_.toolkitOf(field.object)) != Toolkit::unknown;
}

bool LinuxAccessibility::selectionIsKnownEmpty() {
  if (!selectionIsKnownEmpty_) return false;
  end_request::sleep(kKeysArrive);
  bus_.joinRound();
  if (const auto field = focusedField()) noteSelection(*field);
  return selectionIsKnownEmpty_;
}

AttributeResult LinuxAccessibility::copyAttributeValue(const AccessibilityElementRef& element,
                                                       std::string_view attribute) {
  if (attribute == kFocusedUIElementAttribute) return focusedElement();
  const auto* atspi = dynamic_cast<const AtspiElement*>(element.get());
  if (atspi == nullptr) return {kAttributeUnsupported, {}};
  if (attribute == kRoleAttribute) {
    const auto& name = atspi->field().roleName;
    return name ? AttributeResult{0, foreignText(*name)} : AttributeResult{kCannotComplete, {}};
  }
  if (attribute == kSelectedTextAttribute) return selectedText(*atspi);
  if (attribute == kValueAttribute) return wholeText(*atspi);
  return {kAttributeUnsupported, {}};
}

AttributeResult LinuxAccessibility::focusedElement() {
  bus_.joinRound();
  const auto field = focusedField();
  const auto checked = std::exchange(checked_, std::nullopt);
  if (!field) return {bus_.isConnected() ? kNoValue : kCannotComplete, {}};
  // The focus may have moved since it was asked whether the field is secure, and the field may have become
  // another.
  const bool isAsChecked = checked && checked->object == field->object && checked->role == field->role &&
                           checked->selection == field->selection;
  if (!isAsChecked && isSecure(*field)) return {kNoValue, {}};
  noteSelection(*field);
  const Toolkit toolkit = toolkitNamed(bus_.toolkitOf(field->object));
  const bool isSettable =
      canBeReplaced(*field, toolkit) && !undoesOnlyWhatIsPasted(display_.frontWindowClass());
  return {0, std::make_shared<const AtspiElement>(*field, toolkit, isSettable)};
}

AttributeResult LinuxAccessibility::selectedText(const AtspiElement& element) {
  const Field& field = element.field();
  if (!field.selectionCount) return {kCannotComplete, {}};
  if (field.hasNothingSelected()) return {0, std::string()};
  if (!field.selection) return {kNoValue, {}};  // several, as in a block selection, or out of the field

  const auto [start, end] = *field.selection;
  std::vector<AtspiCall> questions{askText(field.object, start, end)};
  if (element.isSettable()) {  // then the whole text will be asked for
    questions.push_back(askText(field.object, 0, *field.length));
    questions.push_back(askLength(field.object));
  }
  const auto answers = bus_.callAll(questions);
  auto selected = textIn(answers[0]);
  if (!selected) return {kCannotComplete, {}};
  if (element.toolkit() != Toolkit::unknown && lengthInOffsets(*selected, element.toolkit()) != end - start) {
    return {kNoValue, {}};  // the field does not count as its toolkit does
  }
  if (element.isSettable() && integerIn(answers[2]) == field.length) element.wholeText = textIn(answers[1]);
  if (element.wholeText && cutsACharacter(*field.selection, utf16(*element.wholeText), element.toolkit())) {
    element.wholeText.reset();
    return {kNoValue, {}};
  }
  element.selectedText = selected;
  return {0, std::move(*selected)};
}

AttributeResult LinuxAccessibility::wholeText(const AtspiElement& element) {
  if (auto known = std::exchange(element.wholeText, std::nullopt)) return {0, std::move(*known)};
  const AtspiObject& object = element.field().object;
  // Not to -1 for the end, which an entry of GTK 4 does not know.
  const auto length = integerIn(bus_.call(askLength(object)));
  if (!length || *length < 0) return {kCannotComplete, {}};
  auto text = textIn(bus_.call(askText(object, 0, *length)));
  return text ? AttributeResult{0, std::move(*text)} : AttributeResult{kCannotComplete, {}};
}

SettableResult LinuxAccessibility::isAttributeSettable(const AccessibilityElementRef& element,
                                                       std::string_view attribute) {
  const auto* atspi = dynamic_cast<const AtspiElement*>(element.get());
  if (atspi == nullptr || attribute != kSelectedTextAttribute) return {kAttributeUnsupported, false};
  if (bus_.timedOut(atspi->field().object)) return {kCannotComplete, false};
  return {0, atspi->isSettable()};
}

AccessibilityError LinuxAccessibility::setAttributeValue(const AccessibilityElementRef& element,
                                                         std::string_view attribute, std::string_view value) {
  const auto* atspi = dynamic_cast<const AtspiElement*>(element.get());
  if (atspi == nullptr || attribute != kSelectedTextAttribute || atspi->toolkit() == Toolkit::unknown) {
    return kAttributeUnsupported;
  }
  if (!atspi->selectedText && selectedText(*atspi).error != 0) return kCannotComplete;
  auto oldText = std::exchange(atspi->selectedText, std::nullopt);
  atspi->wholeText.reset();
  const auto wanted = replacementOf(atspi->field(), atspi->toolkit(), oldText.value_or(std::string()), value);
  if (!wanted) return kNoValue;
  Replaced replaced = replace(bus_, *wanted);
  atspi->wholeText = std::move(replaced.wholeText);
  return replaced.isDone ? 0 : kCannotComplete;
}

}  // namespace lexwend::platform
