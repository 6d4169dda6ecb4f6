// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>

class QGuiApplication;

namespace lexwend::platform {

/// What a compositor needs to draw a frame on a screen with 24 Hz, and some more for its answer.
constexpr std::chrono::milliseconds kLastFrame(50);

/// From now on a window is hidden kLastFrame after it was told to, and the main thread sleeps meanwhile, so
/// that the compositor has answered for the last frame. Two threads of Qt 6.4's Wayland plugin end the
/// callback of a frame without a lock, the one when the compositor answers and the other when the window
/// goes: the process aborts when both do at once.
void hideWindowsAfterTheirLastFrame(QGuiApplication& application);

}  // namespace lexwend::platform
