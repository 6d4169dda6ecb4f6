// SPDX-License-Identifier: MIT
#pragma once

namespace lexwend::platform {

/// Puts menus that are open into the accessibility tree, as children of the application beside its windows.
/// The toolkit leaves popups out, and a screen reader that looks for what is on the screen misses them. Call
/// it before the application object is made.
void showOpenMenusInAccessibilityTree();

}  // namespace lexwend::platform
