// SPDX-License-Identifier: MIT
#pragma once

#include "text/text_access.h"

namespace lexwend::TextAccess {

/// Replaces the selection as a user would: copy, convert, paste, by simulated key strokes. The user's
/// pasteboard comes back at once after a failure and half a second after a paste. Throws Error with
/// noSelection or nothingToChange. Whether the application took the paste cannot be told. Main thread only;
/// blocks for about two seconds at worst.
void replaceViaClipboard(const Transform& transform);

}  // namespace lexwend::TextAccess
