// SPDX-License-Identifier: MIT
#include "platform/linux/pipes/pipe_transfers.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "platform/linux/pipes/own_pipes.h"

namespace lexwend::platform {
namespace {

// An application asks a dozen times for one paste; the older fetches tell nothing new.
constexpr std::size_t kRememberedFetches = 256;
// A program that has not read by then has gone, or is stuck.
constexpr std::chrono::seconds kReadingTime{3};

/// Nobody tells that a pipe was read. A program waits for its end, and most read at once.
std::chrono::milliseconds nextLook(PipeTransfers::Clock::duration sinceWritten) {
  constexpr std::chrono::milliseconds kAtOnce{50};
  return sinceWritten < kAtOnce ? std::chrono::milliseconds(1) : std::chrono::milliseconds(20);
}

}  // namespace

void PipeTransfers::start(int pipe, const ClipboardTarget& target, Clock::time_point asked, Ended ended) {
  fcntl(pipe, F_SETFL, O_NONBLOCK);
  transfers_.push_back({.pipe = pipe,
                        .bytes = target.bytes,
                        .isText = isTextTarget(target.name),
                        .counts = !OwnPipe::isEnd(pipe),
                        .asked = asked,
                        .ended = std::move(ended),
                        .offset = 0,
                        .deadline = Clock::now() + patience_});
}

PipeTransfers::Progress PipeTransfers::advance(Transfer& transfer) const {
  while (transfer.offset < transfer.bytes.size()) {
    const ssize_t written = ::write(transfer.pipe, transfer.bytes.data() + transfer.offset,
                                    transfer.bytes.size() - transfer.offset);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0 && errno == EAGAIN && Clock::now() < transfer.deadline) return Progress::waits;
    if (written < 0) return Progress::failed;
    transfer.offset += static_cast<std::size_t>(written);
    transfer.deadline = Clock::now() + patience_;
  }
  if (!transfer.written) transfer.written = Clock::now();
  return transfer.ended ? Progress::done : awaitReading(transfer);
}

/// What is no pipe counts as read.
PipeTransfers::Progress PipeTransfers::awaitReading(const Transfer& transfer) {
  int unread = 0;
  if (::ioctl(transfer.pipe, FIONREAD, &unread) != 0 || unread == 0) return Progress::done;
  pollfd pipe{transfer.pipe, 0, 0};
  const bool nobodyReads = ::poll(&pipe, 1, 0) > 0 && (pipe.revents & POLLERR) != 0;
  if (nobodyReads) return Progress::failed;
  return Clock::now() < *transfer.written + kReadingTime ? Progress::waits : Progress::done;
}

void PipeTransfers::proceed() {
  std::erase_if(transfers_, [this](Transfer& transfer) {
    const Progress progress = advance(transfer);
    if (progress == Progress::waits) return false;
    ::close(transfer.pipe);
    if (progress == Progress::done && transfer.counts) note(transfer);
    if (transfer.ended) transfer.ended(progress == Progress::done);
    return true;
  });
}

void PipeTransfers::note(const Transfer& transfer) {
  fetches_.push_back({transfer.isText, transfer.asked, Clock::now()});
  if (fetches_.size() > kRememberedFetches) fetches_.pop_front();
}

bool PipeTransfers::isUnderWay() const {
  return std::any_of(transfers_.begin(), transfers_.end(), [](const Transfer& each) { return each.counts; });
}

void PipeTransfers::forgetFetches() {
  fetches_.clear();
  for (Transfer& each : transfers_) each.counts = false;
}

void PipeTransfers::abandon() {
  for (const Transfer& transfer : transfers_) ::close(transfer.pipe);
  transfers_.clear();
  fetches_.clear();
}

std::vector<int> PipeTransfers::pipes() const {
  std::vector<int> pipes;
  pipes.reserve(transfers_.size());
  for (const Transfer& transfer : transfers_) {
    if (!transfer.written) pipes.push_back(transfer.pipe);
  }
  return pipes;
}

std::optional<PipeTransfers::Clock::time_point> PipeTransfers::earlier(
    std::optional<Clock::time_point> until) const {
  const Clock::time_point now = Clock::now();
  for (const Transfer& each : transfers_) {
    const auto due = each.written ? now + nextLook(now - *each.written) : each.deadline;
    until = std::min(until.value_or(due), due);
  }
  return until;
}

std::optional<PipeTransfers::Clock::time_point> PipeTransfers::firstTextSince(Clock::time_point since) const {
  if (isUnderWay()) return std::nullopt;
  const auto first = std::find_if(fetches_.begin(), fetches_.end(),
                                  [&](const Fetch& each) { return each.isText && each.asked >= since; });
  return first == fetches_.end() ? std::nullopt : std::optional(first->fetched);
}

bool PipeTransfers::anySince(Clock::time_point since) const {
  return !isUnderWay() && std::any_of(fetches_.begin(), fetches_.end(),
                                      [&](const Fetch& each) { return each.asked >= since; });
}

}  // namespace lexwend::platform
