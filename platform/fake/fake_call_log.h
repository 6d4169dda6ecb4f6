// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lexwend::platform {

/// The calls that the program made to the in-memory system, in order: "pasteboard.clearContents",
/// "runLoop.sleep 20000us", "userDefaults.setInteger hotKeyCode". They hold names and numbers, no text of the
/// user.
class FakeCallLog {
 public:
  void add(std::string call) { calls_.push_back(std::move(call)); }
  const std::vector<std::string>& all() const { return calls_; }
  void clear() { calls_.clear(); }

  /// The calls that begin with `prefix`, in order.
  std::vector<std::string> of(std::string_view prefix) const {
    std::vector<std::string> found;
    for (const auto& call : calls_) {
      if (call.starts_with(prefix)) found.push_back(call);
    }
    return found;
  }
  std::size_t count(std::string_view prefix) const { return of(prefix).size(); }

  /// The index of the first call that begins with `prefix`, for assertions about order.
  std::optional<std::size_t> indexOf(std::string_view prefix) const {
    for (std::size_t i = 0; i < calls_.size(); ++i) {
      if (calls_[i].starts_with(prefix)) return i;
    }
    return std::nullopt;
  }
  /// The index of the last such call.
  std::optional<std::size_t> lastIndexOf(std::string_view prefix) const {
    for (std::size_t i = calls_.size(); i > 0; --i) {
      if (calls_[i - 1].starts_with(prefix)) return i - 1;
    }
    return std::nullopt;
  }

 private:
  std::vector<std::string> calls_;
};

}  // namespace lexwend::platform
