// SPDX-License-Identifier: MIT
#include "platform/linux/selection/pipe_transfers.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace lexwend::platform {
namespace {

// An application asks a dozen times for one paste; the older fetches tell nothing new.
constexpr std::size_t kRememberedFetches = 256;

}  // namespace

void PipeTransfers::start(int pipe, const ClipboardTarget& target, Clock::time_point asked, Ended ended) {
  fcntl(pipe, F_SETFL, O_NONBLOCK);
  transfers_.push_back(
      {pipe, target.bytes, isTextTarget(target.name), asked, std::move(ended), 0, Clock::now() + patience_});
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
    ::close(transfer.pipe);
    if (progress == Progress::done) fetches_.push_back({transfer.isText, transfer.asked, Clock::now()});
    if (fetches_.size() > kRememberedFetches) fetches_.pop_front();
    if (transfer.ended) transfer.ended(progress == Progress::done);
    return true;
  });
}

void PipeTransfers::abandon() {
  for (const Transfer& transfer : transfers_) ::close(transfer.pipe);
  transfers_.clear();
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
  return until;
}

std::optional<PipeTransfers::Clock::time_point> PipeTransfers::firstTextSince(Clock::time_point since) const {
  if (!transfers_.empty()) return std::nullopt;
  const auto first = std::find_if(fetches_.begin(), fetches_.end(),
                                  [&](const Fetch& each) { return each.isText && each.asked >= since; });
  return first == fetches_.end() ? std::nullopt : std::optional(first->fetched);
}

bool PipeTransfers::anySince(Clock::time_point since) const {
  return transfers_.empty() && std::any_of(fetches_.begin(), fetches_.end(),
                                           [&](const Fetch& each) { return each.asked >= since; });
}

}  // namespace lexwend::platform
