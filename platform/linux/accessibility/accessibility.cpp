// SPDX-License-Identifier: MIT
#include "platform/linux/accessibility/accessibility.h"

#include <algorithm>
#include <string>
#include <utility>

#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/ustring.h>

namespace lexwend::platform {

// Offsets and lengths are in the toolkit's own units.
struct Replacement {
  AtspiObject object;
  std::int32_t start = 0, end = 0;  // the old text
  std::string text;                 // the new one
  std::int32_t length = 0;
  std::int32_t lengthOfField = 0;  // before anything is written
};

namespace {

// The codes that macOS gives for the same troubles, so that one log reads like the other.
constexpr AccessibilityError kCannotComplete = -25204;
constexpr AccessibilityError kAttributeUnsupported = -25205;
constexpr AccessibilityError kNoValue = -25212;

/// How a toolkit counts. It decides what InsertText's length means and in what offsets are given; a wrong
/// guess makes Qt insert memory that was never written into the user's document.
enum class Toolkit {
  gtk,      // offsets in code points, InsertText length in UTF-8 bytes
  qt,       // both in UTF-16 code units
  unknown,  // not written to
};

class SystemWideElement final : public AccessibilityElement {};

class AtspiElement final : public AccessibilityElement {
 public:
  AtspiElement(AtspiObject object, Toolkit toolkit) : object_(std::move(object)), toolkit_(toolkit) {}
  const AtspiObject& object() const { return object_; }
  Toolkit toolkit() const { return toolkit_; }

 private:
  AtspiObject object_;
  Toolkit toolkit_;
};

icu::UnicodeString utf16(std::string_view text) {
  return icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
}

std::int32_t lengthInOffsets(std::string_view text, Toolkit toolkit) {
  const icu::UnicodeString units = utf16(text);
  return toolkit == Toolkit::qt ? units.length() : units.countChar32();
}

std::int32_t insertLength(std::string_view text, Toolkit toolkit) {
  return toolkit == Toolkit::qt ? utf16(text).length() : static_cast<std::int32_t>(text.size());
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

bool succeeded(const GVariantRef& reply) {
  if (!reply) return false;
  gboolean done = FALSE;
  g_variant_get(reply.get(), "(b)", &done);
  return done != FALSE;
}

AtspiCall askRole(const AtspiObject& object) {
  return {object, AtspiBus::kAccessible, "GetRole", nullptr, "(u)"};
}

std::optional<std::uint32_t> roleIn(const GVariantRef& reply) {
  if (!reply) return std::nullopt;
  std::uint32_t role = 0;
  g_variant_get(reply.get(), "(u)", &role);
  return role;
}

AtspiCall askText(const AtspiObject& object, std::int32_t start, std::int32_t end) {
  return {object, AtspiBus::kText, "GetText", g_variant_new("(ii)", start, end), "(s)"};
}

AtspiCall askLength(const AtspiObject& object) {
  return askProperty(object, AtspiBus::kText, "CharacterCount");
}

AtspiCall deleteText(const AtspiObject& object, std::int32_t start, std::int32_t end) {
  return {object, AtspiBus::kEditableText, "DeleteText", g_variant_new("(ii)", start, end), "(b)"};
}

/// Asked after the insertion, to see what became of it.
std::vector<AtspiCall> askInsertion(const Replacement& wanted) {
  return {askText(wanted.object, wanted.end, wanted.end + wanted.length), askLength(wanted.object)};
}

struct Insertion {
  bool isComplete = false;  // the whole text is there, and nothing else
  std::int32_t length = 0;  // of what went in, as far as it can be told
};

Insertion insertionIn(const GVariantRef& text, const GVariantRef& lengthOfField, const Replacement& wanted) {
  const auto length = integerIn(lengthOfField);
  if (!text || !length) return {};
  const char* found = nullptr;
  g_variant_get(text.get(), "(&s)", &found);
  const std::int32_t grown = *length - wanted.lengthOfField;
  return {grown == wanted.length && wanted.text == found, std::clamp(grown, 0, wanted.length)};
}

/// As after a paste: the old text gone, the caret behind the new one, nothing selected.
AtspiCall placeCaret(const Replacement& wanted) {
  return {wanted.object, AtspiBus::kText, "SetCaretOffset",
          g_variant_new("(i)", wanted.start + wanted.length), "(b)"};
}

/// The field as it was: what went in is taken out, the old text is selected.
void takeBack(AtspiBus& bus, const Replacement& wanted, std::int32_t insertedLength) {
  const AtspiObject& object = wanted.object;
  if (insertedLength != 0) bus.send(deleteText(object, wanted.end, wanted.end + insertedLength));
  // An insertion that came to nothing may have ended the selection. A field that has none can only add one, a
  // field that has one can only change it.
  bus.send({object, AtspiBus::kText, "AddSelection", g_variant_new("(ii)", wanted.start, wanted.end), "(b)"});
  bus.send(
      {object, AtspiBus::kText, "SetSelection", g_variant_new("(iii)", 0, wanted.start, wanted.end), "(b)"});
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

std::optional<AtspiObject> LinuxAccessibility::focusedObject() {
  if (!bus_.isConnected()) {
    bus_.start();  // for the next time: the bus may have been restarted
    return std::nullopt;
  }
  const auto process = display_.frontProcess();
  return process ? finder_.focusedText(*process) : std::nullopt;
}

bool LinuxAccessibility::focusIsPasswordField() {
  bus_.beginRound();
  checked_.reset();
  focusIsTerminal_ = false;
  const auto object = focusedObject();
  if (!object) return false;
  if (hidesItsText(*object)) return true;
  checked_ = object;
  return false;
}

bool LinuxAccessibility::hidesItsText(const AtspiObject& object) {
  const auto role = roleIn(bus_.call(askRole(object)));
  if (!role || *role == kAtspiRolePasswordText) return true;
  focusIsTerminal_ = *role == kAtspiRoleTerminal;

  // A GTK entry that merely hides its text may call itself plain text, yet puts what it shows into PRIMARY.
  // PRIMARY may be stale, so it counts only when it is as long as what is selected.
  const auto range = selections(object).only;
  if (!range || range->start == range->end) return false;
  const auto primary = display_.primarySelection();
  if (!primary) return false;
  const icu::UnicodeString shown = utf16(*primary);
  return mayBeMask(shown) && shown.countChar32() == range->end - range->start;
}

AttributeResult LinuxAccessibility::copyAttributeValue(const AccessibilityElementRef& element,
                                                       std::string_view attribute) {
  if (attribute == kFocusedUIElementAttribute) return focusedElement();
  const auto* atspi = dynamic_cast<const AtspiElement*>(element.get());
  if (atspi == nullptr) return {kAttributeUnsupported, {}};
  if (attribute == kRoleAttribute) return role(atspi->object());
  if (attribute == kSelectedTextAttribute) return selectedText(atspi->object());
  if (attribute == kValueAttribute) return wholeText(atspi->object());
  return {kAttributeUnsupported, {}};
}

AttributeResult LinuxAccessibility::focusedElement() {
  bus_.joinRound();
  const auto object = focusedObject();
  if (!object) return {bus_.isConnected() ? kNoValue : kCannotComplete, {}};
  // The focus may have moved since it was asked whether the field hides its text.
  if (std::exchange(checked_, std::nullopt) != object && hidesItsText(*object)) return {kNoValue, {}};
  const auto toolkit = bus_.toolkitOf(*object);
  const bool isGtk = toolkit == "gtk" || toolkit == "GTK";
  return {0, std::make_shared<const AtspiElement>(*object, isGtk             ? Toolkit::gtk
                                                           : toolkit == "Qt" ? Toolkit::qt
                                                                             : Toolkit::unknown)};
}

AttributeResult LinuxAccessibility::role(const AtspiObject& object) {
  const GVariantRef reply = bus_.call({object, AtspiBus::kAccessible, "GetRoleName", nullptr, "(s)"});
  if (!reply) return {kCannotComplete, {}};
  const char* name = nullptr;
  g_variant_get(reply.get(), "(&s)", &name);
  return {0, std::string(name)};
}

LinuxAccessibility::Selections LinuxAccessibility::selections(const AtspiObject& object) {
  const auto answers =
      bus_.callAll({{object, AtspiBus::kText, "GetNSelections", nullptr, "(i)"},
                    {object, AtspiBus::kText, "GetSelection", g_variant_new("(i)", 0), "(ii)"},
                    askLength(object)});
  Selections found;
  found.lengthOfField = integerIn(answers[2]);
  if (!answers[0]) return found;
  std::int32_t count = 0;
  g_variant_get(answers[0].get(), "(i)", &count);
  found.count = count;
  if (count != 1 || !answers[1]) return found;
  Range range;
  g_variant_get(answers[1].get(), "(ii)", &range.start, &range.end);
  if (range.start > range.end) std::swap(range.start, range.end);
  if (range.start >= 0) found.only = range;
  return found;
}

AttributeResult LinuxAccessibility::selectedText(const AtspiObject& object) {
  const Selections found = selections(object);
  if (!found.count) return {kCannotComplete, {}};
  if (*found.count == 0) return {0, std::string()};
  if (!found.only) return {kNoValue, {}};  // several selections, as in a block selection
  return found.only->start == found.only->end ? AttributeResult{0, std::string()} : text(object, *found.only);
}

AttributeResult LinuxAccessibility::text(const AtspiObject& object, Range range) {
  const GVariantRef reply = bus_.call(askText(object, range.start, range.end));
  if (!reply) return {kCannotComplete, {}};
  const char* text = nullptr;
  g_variant_get(reply.get(), "(&s)", &text);
  return {0, std::string(text)};
}

AttributeResult LinuxAccessibility::wholeText(const AtspiObject& object) {
  const auto answers = bus_.callAll({askText(object, 0, -1), askLength(object)});
  const auto length = integerIn(answers[1]);
  if (!answers[0]) return {kCannotComplete, {}};
  const char* text = nullptr;
  g_variant_get(answers[0].get(), "(&s)", &text);
  // An entry of GTK 4 does not know -1 for its end.
  const bool isAll = *text != '\0' || length.value_or(0) == 0;
  return isAll ? AttributeResult{0, std::string(text)} : this->text(object, {0, *length});
}

SettableResult LinuxAccessibility::isAttributeSettable(const AccessibilityElementRef& element,
                                                       std::string_view attribute) {
  const auto* atspi = dynamic_cast<const AtspiElement*>(element.get());
  if (atspi == nullptr || attribute != kSelectedTextAttribute) return {kAttributeUnsupported, false};
  if (atspi->toolkit() == Toolkit::unknown) return {0, false};
  const AtspiObject& object = atspi->object();
  const auto answers = bus_.callAll({askStates(object), askInterfaces(object), askRole(object)});
  const auto states = statesIn(answers[0]);
  const auto number = roleIn(answers[2]);
  if (!states || !number) return {kCannotComplete, false};
  // One paragraph of a document knows its own part of a selection only; the rest would stay as it is.
  if (*number == kAtspiRoleParagraph) return {0, false};
  // Into a field of one line Qt inserts by setting its whole text anew: what the user could undo is gone, and
  // the program is not told that its user edited it.
  if (atspi->toolkit() == Toolkit::qt && (*states & kAtspiStateMultiLine) == 0) return {0, false};
  const bool editable = (*states & kAtspiStateEditable) != 0 && (*states & kAtspiStateReadOnly) == 0;
  return {0, editable && interfacesHave(answers[1], AtspiBus::kEditableText)};
}

AccessibilityError LinuxAccessibility::setAttributeValue(const AccessibilityElementRef& element,
                                                         std::string_view attribute, std::string_view value) {
  const auto* atspi = dynamic_cast<const AtspiElement*>(element.get());
  if (atspi == nullptr || attribute != kSelectedTextAttribute || atspi->toolkit() == Toolkit::unknown) {
    return kAttributeUnsupported;
  }
  const AtspiObject& object = atspi->object();
  const Selections found = selections(object);
  if (!found.only || found.only->start == found.only->end || !found.lengthOfField) return kNoValue;
  const Replacement wanted{object,
                           found.only->start,
                           found.only->end,
                           std::string(value),
                           lengthInOffsets(value, atspi->toolkit()),
                           *found.lengthOfField};

  // The new text goes in behind the old one, and the old one goes when the new one was seen there: a field
  // may agree and cut the text short, change it, or do nothing, and the user would be left without either.
  std::vector<AtspiCall> insertion = askInsertion(wanted);
  insertion.insert(insertion.begin(), {object, AtspiBus::kEditableText, "InsertText",
                                       g_variant_new("(isi)", wanted.end, wanted.text.c_str(),
                                                     insertLength(wanted.text, atspi->toolkit())),
                                       "(b)"});
  const auto answers = bus_.callAllToWrite(insertion);
  if (bus_.timedOut(object)) {
    // What timed out waits in the application's queue and will be done, so that the clipboard must not do the
    // same work once more.
    replaceOnceInserted(wanted);
    return 0;
  }
  const Insertion inserted = insertionIn(answers[1], answers[2], wanted);
  bool isDone = false;
  if (succeeded(answers[0]) && inserted.isComplete) {
    isDone = succeeded(bus_.callAllToWrite({deleteText(object, wanted.start, wanted.end)}).front()) ||
             bus_.timedOut(object);
  }
  if (!isDone) {
    takeBack(bus_, wanted, inserted.length);
    bus_.call(askLength(object));  // so that it is done before the clipboard is tried
    return kCannotComplete;
  }
  bus_.send(placeCaret(wanted));
  return 0;
}

void LinuxAccessibility::replaceOnceInserted(const Replacement& wanted) {
  bus_.whenAnswered(askInsertion(wanted), [this, wanted](const std::vector<GVariantRef>& answers) {
    const Insertion inserted = insertionIn(answers[0], answers[1], wanted);
    if (!inserted.isComplete) return takeBack(bus_, wanted, inserted.length);
    bus_.send(deleteText(wanted.object, wanted.start, wanted.end));
    bus_.send(placeCaret(wanted));
  });
}

}  // namespace lexwend::platform
