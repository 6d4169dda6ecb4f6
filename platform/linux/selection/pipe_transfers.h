// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <optional>
#include <vector>

#include "platform/linux/selection/targets.h"

namespace lexwend::platform {

/// Contents of the clipboard on their way through pipes to the programs that fetch them, and when they were
/// fetched. One thread at a time, on which SIGPIPE is blocked or ignored. Nothing waits.
class PipeTransfers {
 public:
  using Clock = std::chrono::steady_clock;
  /// Is told at the end of a transfer, after its pipe was closed, whether all was written.
  using Ended = std::function<void(bool isWritten)>;
  /// A program that takes no piece for so long is gone or stuck.
  static constexpr std::chrono::seconds kPatience{10};

  explicit PipeTransfers(std::chrono::milliseconds patience = kPatience) : patience_(patience) {}
  ~PipeTransfers() { abandon(); }
  PipeTransfers(const PipeTransfers&) = delete;
  PipeTransfers& operator=(const PipeTransfers&) = delete;

  /// Owns the pipe from now on. Nothing is written before proceed(). `asked` is when the program asked. What
  /// this process reads itself (OwnPipe) is not fetched.
  void start(int pipe, const ClipboardTarget& target, Clock::time_point asked, Ended ended = {});
  /// Writes what the pipes take, and ends the transfers that are done, refused or stalled.
  void proceed();
  /// Closes every pipe and tells nobody.
  void abandon();
  /// Whether nothing is left to be written.
  bool empty() const { return transfers_.empty(); }

  /// The pipes, for a wait until one takes more.
  std::vector<int> pipes() const;
  /// `until`, or when proceed() would end the first stalled transfer if that is earlier.
  std::optional<Clock::time_point> earlier(std::optional<Clock::time_point> until) const;

  /// When the first text that was asked for since then had been fetched whole: when it was read, because a
  /// program that has asked and is busy may give up its reading for what is on the clipboard by then. After
  /// three seconds it counts as read. Nothing while a transfer is under way.
  std::optional<Clock::time_point> firstTextSince(Clock::time_point since) const;
  /// Whether anything that was asked for since then has been fetched whole. False while a transfer is under
  /// way.
  bool anySince(Clock::time_point since) const;
  /// What was fetched so far does not count any more.
  void forgetFetches();

 private:
  struct Transfer {
    int pipe;
    Bytes bytes;
    bool isText;
    bool isOwn;  ///< of this process
    Clock::time_point asked;
    Ended ended;
    std::size_t offset;
    Clock::time_point deadline;
  };
  struct Fetch {
    bool isText;
    Clock::time_point asked;
    Clock::time_point fetched;
  };
  enum class Progress { waits, done, failed };

  /// Written, and not yet read.
  struct Unread {
    int readingEnd;
    bool isText;
    Clock::time_point asked;
    Clock::time_point deadline;
  };

  Progress advance(Transfer& transfer) const;
  void awaitReading(const Transfer& transfer);
  void noteReading();
  bool isUnderWay() const;

  std::chrono::milliseconds patience_;
  std::vector<Transfer> transfers_;
  std::vector<Unread> unread_;
  std::deque<Fetch> fetches_;  // in the order of their ends
};

}  // namespace lexwend::platform
