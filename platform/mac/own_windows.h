// SPDX-License-Identifier: MIT
#pragma once

namespace lexwend::platform::mac {

/// A window of the agent that stands on the screen as long as this lives. An application without an icon in
/// the Dock stays the active one when its last window goes, and nobody has the keyboard then. So the
/// application is hidden, and the one that had the keyboard before is active again. That happens in the run
/// loop's next turn: an event that closes one window may show the next. Main thread only.
class ShownWindow {
 public:
  ShownWindow();
  ~ShownWindow();
  ShownWindow(const ShownWindow&) = delete;
  ShownWindow& operator=(const ShownWindow&) = delete;
};

/// Something else that the agent has just opened is to have the keyboard.
void leaveKeyboardToOthers();

}  // namespace lexwend::platform::mac
