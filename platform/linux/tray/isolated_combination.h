// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace lexwend::platform {

/// The signs of the modifiers. They are neutral in direction, so in Hebrew text a sign would move to the
/// wrong side of its key.
inline const QString kModifierSigns = QStringLiteral("⌃⌥⇧⌘");

/// The text to draw: every occurrence of the combination is isolated from left to right (LRI and PDI of the
/// Unicode Bidirectional Algorithm). A combination without a modifier needs no isolation.
inline QString withIsolated(QString text, const QString& combination) {
  if (combination.isEmpty() || !kModifierSigns.contains(combination.front())) return text;
  return text.replace(combination, QChar(0x2066) + combination + QChar(0x2069));
}

}  // namespace lexwend::platform
