// SPDX-License-Identifier: MIT
#pragma once

#include <QRegularExpression>
#include <QString>

namespace lexwend::platform {

/// The text with direction left to right (LRI) or right to left (RLI) inside, of no influence on what stands
/// around it (Unicode Bidirectional Algorithm, isolates).
inline QString isolatedLeftToRight(const QString& text) {
  return QChar(0x2066) + text + QChar(0x2069);
}
inline QString isolatedRightToLeft(const QString& text) {
  return QChar(0x2067) + text + QChar(0x2069);
}

/// The combination of keys at the end of a text; empty when there is none with a modifier.
inline QString combinationIn(const QString& text) {
  static const QRegularExpression kCombination(QStringLiteral("(?:Super|Ctrl|Alt|Shift)\\+.*$"));
  return kCombination.match(text).captured();
}

/// The text to draw: every occurrence of the combination is isolated from left to right, since a sign at its
/// end ("Ctrl+,") would move to its other side in Hebrew text. A combination without a modifier needs none.
inline QString withIsolated(QString text, const QString& combination) {
  if (!combination.contains('+')) return text;
  return text.replace(combination, isolatedLeftToRight(combination));
}

}  // namespace lexwend::platform
