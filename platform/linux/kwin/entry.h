// SPDX-License-Identifier: MIT
#pragma once

namespace lexwend::platform {

/// Whether an entry of an application is installed that asks KWin to let a program named lexwend press keys
/// and know the windows (X-KDE-Wayland-Interfaces). KWin tells only that program itself. Reads every entry
/// from disk.
bool anEntryGrantsKeys();

}  // namespace lexwend::platform
