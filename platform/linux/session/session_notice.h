// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace lexwend::platform {

/// A sentence about the session, in English for the log and the terminal and in Hebrew for the user.
struct SessionNotice {
  std::string_view english;
  std::string_view hebrew;
};

/// What works and what does not in a session, and what to do about it.
struct SessionLimit {
  SessionNotice what;
  SessionNotice wayOut;
};

/// True where the desktop's windows are not X11 windows.
bool sessionIsWayland();
/// What works and what does not in a Wayland session that also has an X11 display.
extern const SessionNotice kWaylandWithX11;
/// What works and what does not where a compositor does not let this program press keys.
extern const SessionNotice kNoGrant;
/// What to do about that.
extern const SessionNotice kHowToGetGrant;
/// Why no hot key can be taken in GNOME without the extension.
extern const SessionLimit kNoExtension;
/// Why no hot key can be taken where the compositor has no way for it.
extern const SessionLimit kNoHotKey;
/// Why no agent can run in a Wayland session without one.
extern const SessionNotice kWaylandOnly;
/// Why no agent can run without any display.
extern const SessionNotice kNoDisplay;

/// Asks the desktop to show the Hebrew sentence, from right to left. Main thread only. Blocks until the
/// desktop has taken it, since the process may end right after: for kBusCallTimeout at most, and as long once
/// more for the first connection to the session bus. Nothing happens where there is no bus or nobody shows
/// notifications.
void notifyUser(std::string_view sentence);

}  // namespace lexwend::platform
