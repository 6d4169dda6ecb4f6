// SPDX-License-Identifier: MIT
#include "platform/fake/fake_run_loop.h"

#include <string>
#include <utility>

namespace lexwend::platform {
namespace {

class FakeTimer : public std::enable_shared_from_this<FakeTimer> {
 public:
  FakeTimer(FakeSystem& system, std::chrono::milliseconds interval, std::function<void()> handler,
            std::shared_ptr<std::size_t> live)
      : system_(system), interval_(interval), handler_(std::move(handler)), live_(std::move(live)) {
    ++*live_;
  }
  ~FakeTimer() {
    if (valid_) --*live_;
  }
  FakeTimer(const FakeTimer&) = delete;
  FakeTimer& operator=(const FakeTimer&) = delete;

  void schedule() {
    system_.clock.defer(interval_, [self = shared_from_this()] { self->fire(); });
  }
  void invalidate() {
    if (!valid_) return;
    valid_ = false;
    --*live_;
    system_.called("timer.invalidate");
    // A handler may invalidate its own timer, which is then destroyed after the handler has returned.
    if (!firing_) handler_ = nullptr;
  }

 private:
  void fire() {
    if (!valid_) return;
    firing_ = true;
    handler_();
    firing_ = false;
    if (valid_) {
      schedule();
    } else {
      handler_ = nullptr;
    }
  }

  FakeSystem& system_;
  std::chrono::milliseconds interval_;
  std::function<void()> handler_;
  std::shared_ptr<std::size_t> live_;
  bool valid_ = true;
  bool firing_ = false;
};

}  // namespace

void FakeRunLoop::dispatchAfter(std::chrono::milliseconds delay, std::function<void()> work) {
  system_.called("runLoop.dispatchAfter " + std::to_string(delay.count()) + "ms");
  ++pendingWork_;
  system_.clock.defer(delay, [this, work = std::move(work)] {
    --pendingWork_;
    work();
  });
}

Registration FakeRunLoop::scheduledRepeatingTimer(std::chrono::milliseconds interval,
                                                  std::function<void()> handler) {
  system_.called("runLoop.timer " + std::to_string(interval.count()) + "ms");
  auto timer = std::make_shared<FakeTimer>(system_, interval, std::move(handler), liveTimers_);
  timer->schedule();
  return Registration([weak = std::weak_ptr(timer)] {
    if (const auto live = weak.lock()) live->invalidate();
  });
}

void FakeRunLoop::sleep(std::chrono::microseconds duration) {
  system_.called("runLoop.sleep " + std::to_string(duration.count()) + "us");
  system_.clock.sleep(duration);
}

}  // namespace lexwend::platform
