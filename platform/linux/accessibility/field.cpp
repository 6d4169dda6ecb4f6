// SPDX-License-Identifier: MIT
#include "platform/linux/accessibility/field.h"

#include <utility>

namespace lexwend::platform {
namespace {

/// Fields were seen to give offsets that lie outside of them, and negative ones.
std::optional<TextRange> selectionIn(const GVariantRef& reply, std::optional<std::int32_t> length) {
  if (!reply || !length) return std::nullopt;
  TextRange range;
  g_variant_get(reply.get(), "(ii)", &range.start, &range.end);
  if (range.start > range.end) std::swap(range.start, range.end);
  return range.start >= 0 && range.end <= *length ? std::optional(range) : std::nullopt;
}

}  // namespace

std::vector<AtspiCall> askField(const AtspiObject& object) {
  return {askStates(object), askInterfaces(object),     askRole(object),          askRoleName(object),
          askLength(object), askSelectionCount(object), askFirstSelection(object)};
}

Field fieldIn(const AtspiObject& object, std::span<const GVariantRef> answers) {
  Field field;
  field.object = object;
  field.states = statesIn(answers[0]);
  field.hasText = interfacesHave(answers[1], kAtspiText);
  field.hasEditableText = interfacesHave(answers[1], kAtspiEditableText);
  field.role = unsignedIn(answers[2]);
  field.roleName = textIn(answers[3]);
  field.length = integerIn(answers[4]);
  if (field.length && *field.length < 0) field.length.reset();
  field.selectionCount = integerIn(answers[5]);
  if (field.selectionCount == 1) field.selection = selectionIn(answers[6], field.length);
  return field;
}

}  // namespace lexwend::platform
