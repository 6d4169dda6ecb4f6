// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace lexwend {

/// Tells a person who waits how much was read: a line on standard error that is written over, from the second
/// second on. Silent unless standard error is a terminal and standard output is none.
class Progress {
 public:
  Progress();
  /// Clears the line.
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void add(std::size_t bytes);

 private:
  bool isWanted_;
  bool isShown_ = false;
  std::uint64_t bytes_ = 0;
  std::chrono::steady_clock::time_point next_;
};

}  // namespace lexwend
