// SPDX-License-Identifier: MIT
#include "platform/linux/accessibility.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <string>
#include <utility>

#include <unicode/unistr.h>
#include <unicode/ustring.h>

#include "platform/linux/clipboard_reader.h"

namespace lexwend::platform {
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

/// Whether a text is nothing but the signs that toolkits draw for hidden characters.
bool isMask(const icu::UnicodeString& text) {
  for (std::int32_t i = 0; i < text.length(); ++i) {
    const char16_t unit = text.charAt(i);
    if (unit != u'\u2022' && unit != u'\u25CF' && unit != u'*') return false;
  }
  return !text.isEmpty();
}

bool succeeded(const GVariantRef& reply) {
  if (!reply) return false;
  gboolean done = FALSE;
  g_variant_get(reply.get(), "(b)", &done);
  return done != FALSE;
}

std::optional<std::uint32_t> processOfActiveWindow(X11Connection& x11) {
  // _NET_WM_PID, EWMH: one CARDINAL of 32 bits.
  const auto value = x11.property(x11.activeWindow(), x11.atom("_NET_WM_PID"));
  std::uint32_t process = 0;
  if (!value || value->size() < sizeof process) return std::nullopt;
  std::memcpy(&process, value->data(), sizeof process);
  return process;
}

std::optional<std::string> readPrimarySelection() {
  constexpr std::chrono::milliseconds kTime{100};
  constexpr std::size_t kMaxBytes = 4096;  // a masked entry holds a password, not a book
  const auto reader = ClipboardReader::open("PRIMARY");
  return reader ? reader->readText({kTime, kTime, kMaxBytes}) : std::nullopt;
}

LinuxAccessibility::Display displayOf(const std::shared_ptr<X11Connection>& x11) {
  return {
      .mayControl = [x11] { return x11 != nullptr && x11->hasXTest() && x11->hasXFixes() && x11->hasXkb(); },
      .frontProcess = [x11] { return x11 != nullptr ? processOfActiveWindow(*x11) : std::nullopt; },
      .primarySelection = [] { return readPrimarySelection(); },
  };
}

}  // namespace

LinuxAccessibility::LinuxAccessibility(Display display) : display_(std::move(display)), finder_(bus_) {}

LinuxAccessibility::LinuxAccessibility(const std::shared_ptr<X11Connection>& x11)
    : LinuxAccessibility(displayOf(x11)) {}

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
  const auto object = focusedObject();
  if (!object) return false;

  if (roleNumber(*object) == kAtspiRolePasswordText) return true;

  // A GTK entry that merely hides its text calls itself plain text, yet puts the masked text into PRIMARY.
  // PRIMARY may be stale, so it counts only when it is as long as what is selected.
  const auto range = onlySelection(*object);
  if (!range || range->start == range->end) return false;
  const auto primary = display_.primarySelection();
  if (!primary) return false;
  const icu::UnicodeString shown = utf16(*primary);
  return isMask(shown) && shown.countChar32() == range->end - range->start;
}

AttributeResult LinuxAccessibility::copyAttributeValue(const AccessibilityElementRef& element,
                                                       std::string_view attribute) {
  if (attribute == kFocusedUIElementAttribute) return focusedElement();
  const auto* atspi = dynamic_cast<const AtspiElement*>(element.get());
  if (atspi == nullptr) return {kAttributeUnsupported, {}};
  if (attribute == kRoleAttribute) return role(atspi->object());
  if (attribute == kSelectedTextAttribute) return selectedText(atspi->object());
  if (attribute == kValueAttribute) return text(atspi->object(), {0, -1});
  return {kAttributeUnsupported, {}};
}

AttributeResult LinuxAccessibility::focusedElement() {
  bus_.joinRound();
  const auto object = focusedObject();
  if (!object) return {bus_.isConnected() ? kNoValue : kCannotComplete, {}};

  Toolkit toolkit = Toolkit::unknown;
  const GVariantRef application =
      bus_.call(*object, AtspiBus::kAccessible, "GetApplication", nullptr, "((so))");
  if (application) {
    const char* name = nullptr;
    const char* path = nullptr;
    g_variant_get(application.get(), "((&s&o))", &name, &path);
    // An application may name itself by an empty bus name: it is the one that answered.
    const AtspiObject root{*name != '\0' ? name : object->bus, path};
    const GVariantRef value = bus_.property(root, AtspiBus::kApplication, "ToolkitName");
    if (value && g_variant_is_of_type(value.get(), G_VARIANT_TYPE_STRING) != FALSE) {
      const std::string toolkitName = g_variant_get_string(value.get(), nullptr);
      if (toolkitName == "gtk" || toolkitName == "GTK") toolkit = Toolkit::gtk;
      if (toolkitName == "Qt") toolkit = Toolkit::qt;
    }
  }
  return {0, std::make_shared<const AtspiElement>(*object, toolkit)};
}

std::optional<std::uint32_t> LinuxAccessibility::roleNumber(const AtspiObject& object) {
  const GVariantRef reply = bus_.call(object, AtspiBus::kAccessible, "GetRole", nullptr, "(u)");
  if (!reply) return std::nullopt;
  std::uint32_t number = 0;
  g_variant_get(reply.get(), "(u)", &number);
  return number;
}

AttributeResult LinuxAccessibility::role(const AtspiObject& object) {
  const GVariantRef reply = bus_.call(object, AtspiBus::kAccessible, "GetRoleName", nullptr, "(s)");
  if (!reply) return {kCannotComplete, {}};
  const char* name = nullptr;
  g_variant_get(reply.get(), "(&s)", &name);
  return {0, std::string(name)};
}

std::optional<std::int32_t> LinuxAccessibility::selectionCount(const AtspiObject& object) {
  const GVariantRef reply = bus_.call(object, AtspiBus::kText, "GetNSelections", nullptr, "(i)");
  if (!reply) return std::nullopt;
  std::int32_t count = 0;
  g_variant_get(reply.get(), "(i)", &count);
  return count;
}

std::optional<LinuxAccessibility::Range> LinuxAccessibility::onlySelection(const AtspiObject& object) {
  if (selectionCount(object) != 1) return std::nullopt;
  const GVariantRef reply =
      bus_.call(object, AtspiBus::kText, "GetSelection", g_variant_new("(i)", 0), "(ii)");
  if (!reply) return std::nullopt;
  Range range;
  g_variant_get(reply.get(), "(ii)", &range.start, &range.end);
  if (range.start > range.end) std::swap(range.start, range.end);
  return range.start >= 0 ? std::optional(range) : std::nullopt;
}

AttributeResult LinuxAccessibility::selectedText(const AtspiObject& object) {
  const auto count = selectionCount(object);
  if (!count) return {kCannotComplete, {}};
  if (*count == 0) return {0, std::string()};
  const auto range = onlySelection(object);
  if (!range) return {kNoValue, {}};  // several selections, as in a block selection
  return range->start == range->end ? AttributeResult{0, std::string()} : text(object, *range);
}

AttributeResult LinuxAccessibility::text(const AtspiObject& object, Range range) {
  const GVariantRef reply =
      bus_.call(object, AtspiBus::kText, "GetText", g_variant_new("(ii)", range.start, range.end), "(s)");
  if (!reply) return {kCannotComplete, {}};
  const char* text = nullptr;
  g_variant_get(reply.get(), "(&s)", &text);
  return {0, std::string(text)};
}

SettableResult LinuxAccessibility::isAttributeSettable(const AccessibilityElementRef& element,
                                                       std::string_view attribute) {
  const auto* atspi = dynamic_cast<const AtspiElement*>(element.get());
  if (atspi == nullptr || attribute != kSelectedTextAttribute) return {kAttributeUnsupported, false};
  if (atspi->toolkit() == Toolkit::unknown) return {0, false};
  const auto states = bus_.states(atspi->object());
  if (!states) return {kCannotComplete, false};
  // One paragraph of a document knows its own part of a selection only; the rest would stay as it is.
  const auto number = roleNumber(atspi->object());
  if (!number) return {kCannotComplete, false};
  if (*number == kAtspiRoleParagraph) return {0, false};
  const bool editable = (*states & kAtspiStateEditable) != 0 && (*states & kAtspiStateReadOnly) == 0;
  return {0, editable && bus_.hasInterface(atspi->object(), AtspiBus::kEditableText)};
}

AccessibilityError LinuxAccessibility::setAttributeValue(const AccessibilityElementRef& element,
                                                         std::string_view attribute, std::string_view value) {
  const auto* atspi = dynamic_cast<const AtspiElement*>(element.get());
  if (atspi == nullptr || attribute != kSelectedTextAttribute || atspi->toolkit() == Toolkit::unknown) {
    return kAttributeUnsupported;
  }
  const AtspiObject& object = atspi->object();
  const auto range = onlySelection(object);
  if (!range || range->start == range->end) return kNoValue;

  // The new text goes in behind the old one before the old one goes, so that a field that refuses halfway
  // never leaves the user without either. A call that times out is not taken back: it waits in the
  // application's queue and will be done, so the rest is sent after it, and the clipboard must not do the
  // same work once more.
  const std::string text(value);
  const std::int32_t length = lengthInOffsets(text, atspi->toolkit());
  const GVariantRef inserted = bus_.callToWrite(
      object, AtspiBus::kEditableText, "InsertText",
      g_variant_new("(isi)", range->end, text.c_str(), insertLength(text, atspi->toolkit())), "(b)");
  if (bus_.timedOut(object)) {
    bus_.send(object, AtspiBus::kEditableText, "DeleteText", g_variant_new("(ii)", range->start, range->end));
    return 0;
  }
  if (!succeeded(inserted)) return kCannotComplete;
  const GVariantRef deleted = bus_.callToWrite(object, AtspiBus::kEditableText, "DeleteText",
                                               g_variant_new("(ii)", range->start, range->end), "(b)");
  if (!succeeded(deleted) && !bus_.timedOut(object)) {
    bus_.send(object, AtspiBus::kEditableText, "DeleteText",
              g_variant_new("(ii)", range->end, range->end + length));
    return kCannotComplete;
  }
  // As after a paste: the caret behind the new text, nothing selected.
  bus_.call(object, AtspiBus::kText, "SetCaretOffset", g_variant_new("(i)", range->start + length), "(b)");
  return 0;
}

}  // namespace lexwend::platform
