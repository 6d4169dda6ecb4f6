// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace lexwend::platform {

/// A sentence about the session, in English for the log and the terminal and in Hebrew for the user.
struct SessionNotice {
  std::string_view english;
  std::string_view hebrew;
};

/// True where the desktop's windows are not X11 windows.
bool sessionIsWayland();
/// What works and what does not in a Wayland session that also has an X11 display.
extern const SessionNotice kWaylandWithX11;
/// Why no agent can run in a Wayland session without one.
extern const SessionNotice kWaylandOnly;
/// Why no agent can run without any display.
extern const SessionNotice kNoDisplay;

/// Asks the desktop to show the sentence and waits until it has taken it, for kBusCallTimeout at most: the
/// process may end right after. Nothing happens where nobody shows notifications.
void notifyUser(std::string_view sentence);

}  // namespace lexwend::platform
