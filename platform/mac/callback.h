// SPDX-License-Identifier: MIT
#pragma once

#include <cstdio>
#include <memory>
#include <utility>

namespace lexwend::platform::mac {

/// Runs what a callback of the system has to do. No C++ exception may unwind through frames of the system, so
/// it ends here: the event counts as handled and the agent goes on.
template <typename Work>
void guarded(const Work& work) noexcept {
  try {
    work();
  } catch (...) {
    std::fputs("lexwend: an exception ended in a callback of the system\n", stderr);
  }
}

/// A handler that stays alive while it runs, even when it removes the very registration that holds it.
template <typename Handler>
std::shared_ptr<Handler> shared(Handler handler) {
  return std::make_shared<Handler>(std::move(handler));
}

}  // namespace lexwend::platform::mac
