// SPDX-License-Identifier: MIT
#pragma once

#include "text/text_access.h"

namespace lexwend::TextAccess {

/// Replaces the selection of the focused element by reading and writing its selected text, and checks by its
/// whole value that the write took effect. True when the text was replaced. False when the element does not
/// support this path. Throws Error with nothingToChange when the transform returns nothing; then nothing was
/// written. Main thread only. Blocks while the application answers, each call until the deadline of the host.
bool replaceViaAccessibility(const Transform& transform);

}  // namespace lexwend::TextAccess
