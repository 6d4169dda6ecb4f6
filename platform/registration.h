// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace lexwend::platform {

/// Keeps a hot key, a timer or an observer registered with a host for as long as it lives. An empty one keeps
/// nothing. It must be destroyed before its host. Main thread only.
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
  /// Ends the registration and empties this object. A handler may cancel its own registration: it runs to its
  /// end, is not called again, and lives until it returns.
  void cancel() {
    if (const auto end = std::exchange(end_, nullptr)) end();
  }
  /// Empties this object without ending the registration, which then lasts until the process ends.
  void detach() { end_ = nullptr; }

 private:
  std::function<void()> end_;
};

/// The handlers of one kind of event. The destruction of a registration removes its handler. A registration
/// may outlive this object.
template <typename Handler>
class Handlers {
 public:
  Registration add(Handler handler) {
    std::erase_if(handlers_, [](const auto& weak) { return weak.expired(); });
    auto kept = std::make_shared<Handler>(std::move(handler));
    handlers_.push_back(kept);
    return Registration([kept = std::move(kept)] {});
  }
  /// The handlers that are registered now, in the order of their registration. Each lives as long as the
  /// returned list.
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
