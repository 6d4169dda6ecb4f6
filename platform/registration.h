// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace lexwend::platform {

/// A hot key, a timer or an observer that stands with a host for as long as this object lives. An empty one
/// stands for nothing. It goes before its host. Main thread only.
class [[nodiscard]] Registration {
 public:
  Registration() = default;
  explicit Registration(std::function<void()> end) : end_(std::move(end)) {}
  Registration(Registration&& other) noexcept : end_(std::exchange(other.end_, nullptr)) {}
  Registration& operator=(Registration&& other) noexcept {
    std::swap(end_, other.end_);
    other.cancel();
    return *this;
  }
  ~Registration() { cancel(); }

  explicit operator bool() const { return end_ != nullptr; }
  /// Ends what is registered and empties this object. The handler that is running may do so: it runs to its
  /// end, is never called again, and lives until it returns.
  void cancel() {
    if (const auto end = std::exchange(end_, nullptr)) end();
  }
  /// Empties this object without ending what is registered: that stays until the process ends.
  void letStand() { end_ = nullptr; }

 private:
  std::function<void()> end_;
};

/// The handlers of one kind of event. A handler goes with its registration, which may outlive this object.
template <typename Handler>
class Handlers {
 public:
  Registration add(Handler handler) {
    std::erase_if(handlers_, [](const auto& weak) { return weak.expired(); });
    auto kept = std::make_shared<Handler>(std::move(handler));
    handlers_.push_back(kept);
    return Registration([kept = std::move(kept)] {});
  }
  /// Those that are registered now, in the order of their registration; each lives as long as the list.
  std::vector<std::shared_ptr<Handler>> all() const {
    std::vector<std::shared_ptr<Handler>> all;
    for (const auto& weak : handlers_) {
      if (auto handler = weak.lock()) all.push_back(std::move(handler));
    }
    return all;
  }
  std::size_t count() const { return all().size(); }
  void clear() { handlers_.clear(); }

 private:
  std::vector<std::weak_ptr<Handler>> handlers_;
};

}  // namespace lexwend::platform
