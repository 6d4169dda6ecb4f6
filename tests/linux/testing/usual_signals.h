// SPDX-License-Identifier: MIT
#pragma once

#include <csignal>

namespace lexwend::platform {

/// A parent in the background leaves signals ignored, and a program that was started to ignore one goes on
/// to.
inline void takeSignalsAsUsual() {
  for (const int number : {SIGTERM, SIGINT, SIGHUP}) std::signal(number, SIG_DFL);
}

}  // namespace lexwend::platform
