// SPDX-License-Identifier: MIT
#pragma once

#include "text/text_access.h"

namespace lexwend::TextAccess {

/// Replaces the selection as a user would: copy, convert, paste, by simulated key strokes. The user's
/// pasteboard is restored at once after a failure and half a second after a paste. Throws Error with
/// noSelection or nothingToChange. Throws noSelection at once when the host refuses a shortcut. Returns after
/// the paste shortcut is sent; whether the application pasted is not known. Main thread only. Blocks for two
/// seconds at most, besides what the pasteboard waits for other programs. On Linux that makes six and a half
/// seconds at most.
void replaceViaClipboard(const Transform& transform);

}  // namespace lexwend::TextAccess
