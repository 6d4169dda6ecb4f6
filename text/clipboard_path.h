// SPDX-License-Identifier: MIT
#pragma once

#include "text/text_access.h"

namespace lexwend::TextAccess {

/// Replaces the selection as a user would: copy, convert, paste, by simulated key strokes. The user's
/// pasteboard comes back at once after a failure and half a second after a paste. Throws Error with
/// noSelection or nothingToChange. Ends with noSelection at once where the host refuses one of the shortcuts.
/// Whether the application took the paste cannot be told. Main thread only. Blocks for two seconds at most
/// besides what the pasteboard waits for other programs: on Linux six and a half seconds at most in all.
void replaceViaClipboard(const Transform& transform);

}  // namespace lexwend::TextAccess
