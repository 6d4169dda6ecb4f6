// SPDX-License-Identifier: MIT
#include "platform/linux/selection/pipe_transfers.h"

#include <algorithm>
#include <cerrno>
#include <string>
#include <utility>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "platform/linux/selection/own_pipes.h"

namespace lexwend::platform {
namespace {

// An application asks a dozen times for one paste; the older fetches tell nothing new.
constexpr std::size_t kRememberedFetches = 256;
// Nobody tells that a pipe was read.
constexpr std::chrono::milliseconds kLookAtPipes{20};
// A program that has not read by then has gone, which cannot be told from one that is busy.
constexpr std::chrono::seconds kReadingTime{3};

}  // namespace

void PipeTransfers::start(int pipe, const ClipboardTarget& target, Clock::time_point asked, Ended ended) {
  fcntl(pipe, F_SETFL, O_NONBLOCK);
  transfers_.push_back({pipe, target.bytes, isTextTarget(target.name), OwnPipe::isEnd(pipe), asked,
                        std::move(ended), 0, Clock::now() + patience_});
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
  return Progress::done;
}

void PipeTransfers::proceed() {
  std::erase_if(transfers_, [this](Transfer& transfer) {
    const Progress progress = advance(transfer);
    if (progress == Progress::waits) return false;
    if (progress == Progress::done && !transfer.isOwn) awaitReading(transfer);
    ::close(transfer.pipe);
    if (transfer.ended) transfer.ended(progress == Progress::done);
    return true;
  });
  noteReading();
}

/// By a reading end of this process, so that whoever reads meets the end when the writing end is closed. What
/// cannot be opened is no pipe, and counts as read.
void PipeTransfers::awaitReading(const Transfer& transfer) {
  const std::string pipe = "/proc/self/fd/" + std::to_string(transfer.pipe);
  const int readingEnd = ::open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  unread_.push_back({readingEnd, transfer.isText, transfer.asked, Clock::now() + kReadingTime});
}

void PipeTransfers::noteReading() {
  std::erase_if(unread_, [this](const Unread& each) {
    int bytes = 0;
    const bool isRead = ::ioctl(each.readingEnd, FIONREAD, &bytes) != 0 || bytes == 0;
    const Clock::time_point now = Clock::now();
    if (!isRead && now < each.deadline) return false;
    if (each.readingEnd >= 0) ::close(each.readingEnd);
    fetches_.push_back({each.isText, each.asked, now});
    if (fetches_.size() > kRememberedFetches) fetches_.pop_front();
    return true;
  });
}

bool PipeTransfers::isUnderWay() const {
  const bool isWriting =
      std::any_of(transfers_.begin(), transfers_.end(), [](const Transfer& each) { return !each.isOwn; });
  return isWriting || !unread_.empty();
}

void PipeTransfers::forgetFetches() {
  fetches_.clear();
  for (const Unread& each : unread_) {
    if (each.readingEnd >= 0) ::close(each.readingEnd);
  }
  unread_.clear();
}

void PipeTransfers::abandon() {
  for (const Transfer& transfer : transfers_) ::close(transfer.pipe);
  transfers_.clear();
  forgetFetches();
}

std::vector<int> PipeTransfers::pipes() const {
  std::vector<int> pipes;
  pipes.reserve(transfers_.size());
  for (const Transfer& transfer : transfers_) pipes.push_back(transfer.pipe);
  return pipes;
}

std::optional<PipeTransfers::Clock::time_point> PipeTransfers::earlier(
    std::optional<Clock::time_point> until) const {
  for (const Transfer& transfer : transfers_) {
    until = std::min(until.value_or(transfer.deadline), transfer.deadline);
  }
  if (unread_.empty()) return until;
  const Clock::time_point look = Clock::now() + kLookAtPipes;
  return std::min(until.value_or(look), look);
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
