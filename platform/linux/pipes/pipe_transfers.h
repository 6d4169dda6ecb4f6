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
  ///
  /// The pipe is closed when it has been read, because a program that has asked and is busy may give up its
  /// reading for what is on the clipboard by then. After three seconds it is closed all the same. A pipe with
  /// `ended` leads to the compositor, which reads it after it was told the end: it is closed when all is
  /// written.
  void start(int pipe, const ClipboardTarget& target, Clock::time_point asked, Ended ended = {});
  /// Writes what the pipes take, and ends the transfers that are read, refused or stalled.
  void proceed();
  /// Closes every pipe and tells nobody.
  void abandon();
  /// Whether none is under way.
  bool empty() const { return transfers_.empty(); }

  /// The pipes that take more some time, for a wait until one does.
  std::vector<int> pipes() const;
  /// `until`, or when proceed() has to look at a transfer if that is earlier.
  std::optional<Clock::time_point> earlier(std::optional<Clock::time_point> until) const;

  /// When the first text that was asked for since then had been fetched whole. Nothing while a transfer is
  /// under way.
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
    bool counts;  ///< as a fetch
    Clock::time_point asked;
    Ended ended;
    std::size_t offset;
    Clock::time_point deadline;
    std::optional<Clock::time_point> written{};  ///< when the last piece was
  };
  struct Fetch {
    bool isText;
    Clock::time_point asked;
    Clock::time_point fetched;
  };
  enum class Progress { waits, done, failed };

  Progress advance(Transfer& transfer) const;
  static Progress awaitReading(const Transfer& transfer);
  void note(const Transfer& transfer);
  bool isUnderWay() const;

  std::chrono::milliseconds patience_;
  std::vector<Transfer> transfers_;
  std::deque<Fetch> fetches_;  // in the order of their ends
};

}  // namespace lexwend::platform
