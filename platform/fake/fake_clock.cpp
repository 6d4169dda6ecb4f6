// SPDX-License-Identifier: MIT
#include "platform/fake/fake_clock.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace lexwend::platform {

void FakeClock::systemDoes(Duration delay, std::function<void()> what) {
  if (delay <= Duration::zero()) {
    what();
  } else {
    add(delay, false, std::move(what));
  }
}

void FakeClock::defer(Duration delay, std::function<void()> work) {
  add(delay, true, std::move(work));
}

void FakeClock::sleep(Duration duration) {
  const Duration end = now_ + std::max(duration, Duration::zero());
  while (auto event = takeNext(end, false)) {
    now_ = std::max(now_, event->due);
    event->run();
  }
  now_ = std::max(now_, end);
}

void FakeClock::advance(Duration duration) {
  const Duration end = now_ + std::max(duration, Duration::zero());
  while (auto event = takeNext(std::max(end, now_), true)) {
    now_ = std::max(now_, event->due);
    event->run();
  }
  now_ = std::max(now_, end);
}

void FakeClock::forgetDeferred() {
  const auto deferred = std::stable_partition(events_.begin(), events_.end(),
                                              [](const Event& event) { return !event.deferred; });
  const std::vector<Event> forgotten(std::make_move_iterator(deferred),
                                     std::make_move_iterator(events_.end()));
  events_.erase(deferred, events_.end());
}

void FakeClock::forgetAll() {
  // The dropped work may call this clock while it is destroyed.
  while (!events_.empty()) std::exchange(events_, {}).clear();
}

std::optional<FakeClock::Event> FakeClock::takeNext(Duration latest, bool deferredToo) {
  auto best = events_.end();
  for (auto event = events_.begin(); event != events_.end(); ++event) {
    if (event->due > latest || (event->deferred && !deferredToo)) continue;
    if (best == events_.end() || std::pair(event->due, event->order) < std::pair(best->due, best->order)) {
      best = event;
    }
  }
  if (best == events_.end()) return std::nullopt;
  Event taken = std::move(*best);
  events_.erase(best);
  return taken;
}

void FakeClock::add(Duration delay, bool deferred, std::function<void()> run) {
  events_.push_back({now_ + std::max(delay, Duration::zero()), nextOrder_++, deferred, std::move(run)});
}

}  // namespace lexwend::platform
