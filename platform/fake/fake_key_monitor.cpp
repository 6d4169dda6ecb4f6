// SPDX-License-Identifier: MIT
#include "platform/fake/fake_key_monitor.h"

#include <utility>

namespace lexwend::platform {
namespace {

template <typename Handler>
class Token : public KeyMonitorToken {
 public:
  Token(FakeSystem& system, std::shared_ptr<Handler> handler)
      : system_(system), handler_(std::move(handler)) {}
  ~Token() override { system_.called("keyMonitor.remove"); }
  Token(const Token&) = delete;
  Token& operator=(const Token&) = delete;

 private:
  FakeSystem& system_;
  std::shared_ptr<Handler> handler_;
};

}  // namespace

KeyMonitorTokenRef FakeKeyMonitor::addLocalKeyDownMonitor(
    std::function<KeyDisposition(const KeyDownEvent&)> handler) {
  system_.called("keyMonitor.addLocalKeyDownMonitor");
  auto shared = std::make_shared<Handler>(std::move(handler));
  handlers_.push_back(shared);
  return std::make_unique<Token<Handler>>(system_, std::move(shared));
}

KeyDisposition FakeKeyMonitor::deliver(const KeyDownEvent& event) {
  const auto handlers = handlers_;
  for (auto weak = handlers.rbegin(); weak != handlers.rend(); ++weak) {
    // Held for the call: the handler may remove its own monitor.
    const auto handler = weak->lock();
    if (handler && (*handler)(event) == KeyDisposition::consumed) return KeyDisposition::consumed;
  }
  return KeyDisposition::passedOn;
}

std::size_t FakeKeyMonitor::installed() const {
  std::size_t count = 0;
  for (const auto& handler : handlers_) count += handler.expired() ? 0 : 1;
  return count;
}

}  // namespace lexwend::platform
