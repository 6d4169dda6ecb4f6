// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace lexwend::platform {

/// The signs of the modifiers. None has a direction of its own: amid Hebrew each takes that of its
/// surroundings, and would stand at the wrong side of its key.
inline const QString kModifierSigns = QStringLiteral("⌃⌥⇧⌘");

/// The text as it is drawn, with every occurrence of that combination of keys isolated, from left to right
/// (LRI and PDI of the Unicode Bidirectional Algorithm). Nothing is isolated where no modifier begins it.
inline QString withIsolated(QString text, const QString& combination) {
  if (combination.isEmpty() || !kModifierSigns.contains(combination.front())) return text;
  return text.replace(combination, QChar(0x2066) + combination + QChar(0x2069));
}

}  // namespace lexwend::platform
