// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/linux/accessibility/atspi_bus.h"
#include "platform/linux/accessibility/field.h"
#include "platform/linux/accessibility/toolkit.h"

namespace lexwend::platform {

/// A part of a field that is to become another text. Lengths are in the toolkit's units.
struct Replacement {
  AtspiObject object;
  Toolkit toolkit = Toolkit::unknown;
  TextRange range;
  std::string oldText;  // in that range
  std::string newText;
  std::int32_t newLength = 0;
  std::int32_t lengthOfField = 0;  // before anything is written

  std::int32_t lengthAfterwards() const { return lengthOfField - (range.end - range.start) + newLength; }
};

/// What a replacement needs to be safe to send; nothing where a number does not fit or the text is not
/// UTF-8 without NUL.
std::optional<Replacement> replacementOf(const Field& field, Toolkit toolkit, std::string oldText,
                                         std::string_view newText);

struct Replaced {
  bool isDone = false;  ///< false: the field is as it was, as far as it can be told and let
  /// The whole text afterwards, where the field told it at once.
  std::optional<std::string> wholeText;
};

/// Replaces in two waits of the bus's round. The new text goes in behind the old one, and the old one goes
/// when both were seen there: a field may agree and cut the text short, change it, or do nothing, and its
/// user may have typed meanwhile; the old text would be lost. The caret goes behind the new text at once.
///
/// What an application does not answer in time waits in its queue and will be done. Then the answer is that
/// it is done, and it is finished or taken back when the application has come to it, while the bus lives.
Replaced replace(AtspiBus& bus, const Replacement& wanted);

}  // namespace lexwend::platform
