// SPDX-License-Identifier: MIT
#include "platform/linux/session/run_loop.h"

#include <algorithm>
#include <thread>

#include <glib.h>

namespace lexwend::platform {
namespace {

guint wholeMilliseconds(std::chrono::milliseconds duration) {
  constexpr auto kLongest = std::chrono::milliseconds(G_MAXUINT);
  return static_cast<guint>(std::clamp(duration, std::chrono::milliseconds(0), kLongest).count());
}

}  // namespace

struct LinuxRunLoop::Work {
  LinuxRunLoop* loop;
  std::function<void()> body;
  std::chrono::milliseconds delay;
  std::chrono::steady_clock::time_point due;
  guint source = 0;
};

class LinuxRunLoop::RepeatingTimer : public Timer, public std::enable_shared_from_this<RepeatingTimer> {
 public:
  RepeatingTimer(LinuxRunLoop& loop, std::function<void(Timer&)> handler)
      : loop_(&loop), handler_(std::move(handler)) {}

  void start(std::chrono::milliseconds interval) {
    source_ = g_timeout_add(wholeMilliseconds(interval), &RepeatingTimer::fire, this);
  }
  void invalidate() override {
    if (source_ == 0) return;
    g_source_remove(source_);
    source_ = 0;
    const auto self = shared_from_this();
    loop_->timers_.erase(self);
    if (!firing_) handler_ = nullptr;
  }

 private:
  static gboolean fire(gpointer data) {
    // The handler may let go of the last reference but this one.
    const auto self = static_cast<RepeatingTimer*>(data)->shared_from_this();
    self->firing_ = true;
    self->handler_(*self);
    self->firing_ = false;
    if (self->source_ != 0) return G_SOURCE_CONTINUE;
    self->handler_ = nullptr;  // what it holds goes with the invalidation, whoever still holds the timer
    return G_SOURCE_REMOVE;
  }

  LinuxRunLoop* loop_;
  std::function<void(Timer&)> handler_;
  guint source_ = 0;
  bool firing_ = false;
};

LinuxRunLoop::~LinuxRunLoop() {
  for (Work* work : pending_) {
    g_source_remove(work->source);
    delete work;
  }
  while (!timers_.empty()) {
    const auto timer = *timers_.begin();
    timer->invalidate();
  }
}

void LinuxRunLoop::dispatchAfter(std::chrono::milliseconds delay, std::function<void()> work) {
  const guint wait = wholeMilliseconds(delay);
  const auto due = std::chrono::steady_clock::now() + std::chrono::milliseconds(wait);
  auto* deferred = new Work{this, std::move(work), delay, due};
  pending_.insert(deferred);
  deferred->source = g_timeout_add(wait, &LinuxRunLoop::runWork, deferred);
}

int LinuxRunLoop::runWork(void* data) {
  const std::unique_ptr<Work> work(static_cast<Work*>(data));
  // GLib runs what became due while the loop was held up in the order in which it was deferred. The earliest
  // is due as well and changes places with this one.
  auto& pending = work->loop->pending_;
  Work* const earliest = *std::min_element(pending.begin(), pending.end(),
                                           [](const Work* a, const Work* b) { return a->due < b->due; });
  std::swap(work->body, earliest->body);
  std::swap(work->due, earliest->due);
  std::swap(work->delay, earliest->delay);
  pending.erase(work.get());
  work->body();
  return G_SOURCE_REMOVE;
}

TimerRef LinuxRunLoop::scheduledRepeatingTimer(std::chrono::milliseconds interval,
                                               std::function<void(Timer&)> handler) {
  const auto timer = std::make_shared<RepeatingTimer>(*this, std::move(handler));
  timers_.insert(timer);
  timer->start(interval);
  return timer;
}

void LinuxRunLoop::sleep(std::chrono::microseconds duration) {
  std::this_thread::sleep_for(duration);
}

void LinuxRunLoop::finishPending(std::chrono::milliseconds longest) {
  // No deadline for all: work that blocks for long before it defers the rest would use it up.
  const auto isWaitedFor = [longest](const Work* work) { return work->delay <= longest; };
  while (std::any_of(pending_.begin(), pending_.end(), isWaitedFor)) g_main_context_iteration(nullptr, TRUE);
}

}  // namespace lexwend::platform
