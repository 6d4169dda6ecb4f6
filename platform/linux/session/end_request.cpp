// SPDX-License-Identifier: MIT
#include "platform/linux/session/end_request.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <ctime>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace lexwend::platform::end_request {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::array kSignals = {SIGTERM, SIGINT, SIGHUP};

// Written by the handler of the signals.
std::atomic<int> wakeDescriptor{-1};
std::atomic<Clock::rep> firstSignal{0};  // 0: there was none
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<Clock::rep>::is_always_lock_free);

void noteSignal(int /*number*/) {
  const int errorBefore = errno;
  Clock::rep none = 0;
  firstSignal.compare_exchange_strong(none, Clock::now().time_since_epoch().count());
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = ::write(wakeDescriptor, &one, sizeof one);
  errno = errorBefore;
}

bool isIgnored(int number) {
  struct sigaction action {};
  return ::sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

}  // namespace

void catchSignals() {
  if (wakeDescriptor >= 0) return;
  wakeDescriptor = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (wakeDescriptor < 0) return;  // the signals end the process at once, as they do by themselves
  struct sigaction action {};
  action.sa_handler = &noteSignal;
  action.sa_flags = SA_RESTART;
  sigemptyset(&action.sa_mask);
  for (const int number : kSignals) {
    if (!isIgnored(number)) ::sigaction(number, &action, nullptr);
  }
}

int descriptor() {
  return wakeDescriptor;
}

Clock::time_point limited(Clock::time_point wanted) {
  const Clock::rep asked = firstSignal;
  return asked == 0 ? wanted : std::min(wanted, Clock::time_point(Clock::duration(asked)) + kGrace);
}

void sleep(std::chrono::microseconds duration) {
  const Clock::time_point wanted = Clock::now() + duration;
  while (true) {
    const Clock::time_point end = limited(wanted);
    const auto left = std::chrono::duration_cast<std::chrono::nanoseconds>(end - Clock::now());
    if (left.count() <= 0) return;
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
    const timespec time{static_cast<time_t>(seconds.count()), static_cast<long>((left - seconds).count())};
    // After a signal the descriptor stays readable and the rest of the grace is slept through.
    pollfd wake{end == wanted ? descriptor() : -1, POLLIN, 0};
    ::ppoll(&wake, 1, &time, nullptr);
  }
}

}  // namespace lexwend::platform::end_request
