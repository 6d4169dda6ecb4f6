// SPDX-License-Identifier: MIT
#include "platform/linux/accessibility/replacement.h"

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

namespace lexwend::platform {
namespace {

AtspiCall insertText(const Replacement& wanted) {
  return {wanted.object, kAtspiEditableText, "InsertText",
          g_variant_new("(isi)", wanted.range.end, wanted.newText.c_str(),
                        insertLength(wanted.newText, wanted.toolkit)),
          "(b)"};
}

AtspiCall deleteText(const AtspiObject& object, std::int32_t start, std::int32_t end) {
  return {object, kAtspiEditableText, "DeleteText", g_variant_new("(ii)", start, end), "(b)"};
}

/// The caret behind the inserted text, nothing selected: what is typed from now on lands there. The selection
/// of a text view of GTK has grown by what was inserted at its end, and a letter would take its place, the
/// new text included. When the old text goes the caret stays where it is in the text, as after a paste.
AtspiCall placeCaret(const Replacement& wanted) {
  return {wanted.object, kAtspiText, "SetCaretOffset",
          g_variant_new("(i)", wanted.range.end + wanted.newLength), "(b)"};
}

/// Asked after the insertion, to see what became of it.
std::vector<AtspiCall> askInsertion(const Replacement& wanted) {
  return {askText(wanted.object, wanted.range.start, wanted.range.end + wanted.newLength),
          askLength(wanted.object)};
}

struct Insertion {
  bool isComplete = false;  // the old text and behind it the new one, and nothing else has changed
  bool isOldTextThere = false;
  TextRange foreign;  // what went in
};

Insertion insertionIn(const GVariantRef& text, const GVariantRef& lengthOfField, const Replacement& wanted) {
  const auto length = integerIn(lengthOfField);
  const auto found = textIn(text);
  if (!found) return {};
  const icu::UnicodeString there = utf16(*found);
  const icu::UnicodeString newText = utf16(wanted.newText);
  const std::int32_t end = wanted.range.end;
  if (there.startsWith(utf16(wanted.oldText))) {
    const std::int64_t grown = length ? std::int64_t{*length} - wanted.lengthOfField : 0;
    const auto inserted = static_cast<std::int32_t>(std::clamp<std::int64_t>(grown, 0, wanted.newLength));
    return {
        grown == wanted.newLength && *found == wanted.oldText + wanted.newText, true, {end, end + inserted}};
  }
  // The user has typed over the selection: only what is surely the new text is taken out.
  const std::int32_t at = there.indexOf(newText);
  if (at < 0) return {};
  const icu::UnicodeString before(there, 0, at);
  const std::int32_t start = wanted.range.start + lengthInOffsets(before, wanted.toolkit);
  return {false, false, {start, start + wanted.newLength}};
}

/// The field as it was: what went in is taken out, the old text is selected.
void takeBack(AtspiBus& bus, const Replacement& wanted, const Insertion& inserted) {
  const AtspiObject& object = wanted.object;
  const auto [from, to] = inserted.foreign;
  if (from != to) bus.send(deleteText(object, from, to));
  if (!inserted.isOldTextThere) return;
  // An insertion that came to nothing may have ended the selection. A field that has none can only add one, a
  // field that has one can only change it.
  const auto [start, end] = wanted.range;
  bus.send({object, kAtspiText, "AddSelection", g_variant_new("(ii)", start, end), "(b)"});
  bus.send({object, kAtspiText, "SetSelection", g_variant_new("(iii)", 0, start, end), "(b)"});
}

void replaceOnceInserted(AtspiBus& bus, const Replacement& wanted) {
  bus.whenAnswered(askInsertion(wanted), [&bus, wanted](const std::vector<GVariantRef>& answers) {
    const Insertion inserted = insertionIn(answers[0], answers[1], wanted);
    if (!inserted.isComplete) return takeBack(bus, wanted, inserted);
    bus.send(deleteText(wanted.object, wanted.range.start, wanted.range.end));
  });
}

}  // namespace

std::optional<Replacement> replacementOf(const Field& field, Toolkit toolkit, std::string oldText,
                                         std::string_view newText) {
  constexpr auto kLongest = static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max());
  if (toolkit == Toolkit::unknown || !field.selection || field.selection->isEmpty() || !field.length ||
      newText.size() > kLongest - static_cast<std::size_t>(*field.length) ||
      g_utf8_validate(newText.data(), static_cast<gssize>(newText.size()), nullptr) == FALSE) {
    return std::nullopt;
  }
  return Replacement{field.object,         toolkit,
                     *field.selection,     std::move(oldText),
                     std::string(newText), lengthInOffsets(newText, toolkit),
                     *field.length};
}

Replaced replace(AtspiBus& bus, const Replacement& wanted) {
  const auto [start, end] = wanted.range;
  std::vector<AtspiCall> insertion{insertText(wanted), placeCaret(wanted)};
  for (AtspiCall& question : askInsertion(wanted)) insertion.push_back(std::move(question));
  const auto answers = bus.callAllToWrite(insertion);
  if (bus.timedOut(wanted.object)) {
    replaceOnceInserted(bus, wanted);
    return {true, std::nullopt};
  }
  const Insertion inserted = insertionIn(answers[2], answers[3], wanted);
  if (succeeded(answers[0]) && inserted.isComplete) {
    const auto deletion =
        bus.callAllToWrite({deleteText(wanted.object, start, end),
                            askText(wanted.object, 0, wanted.lengthAfterwards()), askLength(wanted.object)});
    if (bus.timedOut(wanted.object)) return {true, std::nullopt};
    if (succeeded(deletion[0])) {
      const bool isWhole = integerIn(deletion[2]) == wanted.lengthAfterwards();
      return {true, isWhole ? textIn(deletion[1]) : std::nullopt};
    }
  }
  takeBack(bus, wanted, inserted);
  bus.call(askLength(wanted.object));  // so that it is done before the clipboard is tried
  return {};
}

}  // namespace lexwend::platform
