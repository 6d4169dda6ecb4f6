// SPDX-License-Identifier: MIT
#pragma once

#include "text/text_access.h"

namespace lexwend::TextAccess {

/// Replaces the selection of the focused element by reading and writing its selected text, and checks by its
/// whole value that the write took effect. True: done. False: this way does not serve the element. Throws
/// Error with nothingToChange when the transform returns nothing; then nothing was written. Main thread only;
/// blocks while the application answers, each call within the host's time limit.
bool replaceViaAccessibility(const Transform& transform);

}  // namespace lexwend::TextAccess
