// SPDX-License-Identifier: MIT
// A clipboard manager for the desktop tests: takes what a program that ends hands over to it, and puts that
// on the clipboard when the program is gone.
#include <chrono>
#include <cstdio>
#include <optional>
#include <thread>

#include "tests/linux/testing/other_application.h"

int main() {
  using namespace lexwend::platform;
  ManagingApplication manager;
  PastingApplication clipboard;
  std::optional<CopyingApplication> holder;
  std::puts("ready");
  std::fflush(stdout);
  for (;;) {
    const auto saved = manager.saved();
    if (!holder && !saved.empty() && !clipboard.selectionHasOwner()) {
      holder.emplace(CopyingApplication::Behaviour{{saved.begin(), saved.end()}});
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
}
