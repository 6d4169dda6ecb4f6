// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/linux/accessibility/atspi_calls.h"

namespace lexwend::platform {

/// A part of a text, in the toolkit's own units; the start is not behind the end, and neither is negative.
struct TextRange {
  std::int32_t start = 0, end = 0;
  bool isEmpty() const { return start == end; }
  bool operator==(const TextRange&) const = default;
};

/// What a field said about itself at one moment. Never its text.
struct Field {
  AtspiObject object;
  std::optional<std::uint64_t> states;
  bool hasText = false;
  bool hasEditableText = false;
  std::optional<std::uint32_t> role;
  std::optional<std::string> roleName;  ///< in the words of the application
  std::optional<std::int32_t> length;
  std::optional<std::int32_t> selectionCount;
  std::optional<TextRange> selection;  ///< where there is exactly one, and it lies within the field

  bool has(AtspiStateType state) const { return states && (*states & stateBit(state)) != 0; }
  bool isFocusedText() const { return has(ATSPI_STATE_FOCUSED) && hasText; }
  bool hasNothingSelected() const { return selectionCount == 0 || (selection && selection->isEmpty()); }
};

/// All of it in one go.
std::vector<AtspiCall> askField(const AtspiObject& object);
/// The answers to that, in the same order.
Field fieldIn(const AtspiObject& object, std::span<const GVariantRef> answers);

}  // namespace lexwend::platform
