// SPDX-License-Identifier: MIT
#pragma once

#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/selection/owner.h"
#include "platform/linux/wayland/data_control.h"

struct zwlr_data_control_source_v1;

namespace lexwend::platform {

/// The clipboard of a Wayland compositor. For a thread on which SIGPIPE is blocked or ignored.
///
/// A compositor tells neither who has copied nor who fetches. Everybody is one and the same XApplication, and
/// nobody can be given other contents than the program that pastes. It tells no times either: a time is the
/// number of copies of others so far, and a copy counts as made when it was heard of. By the protocol a
/// program copies only while it has the keyboard, except for those with data control.
///
/// Between the look for other copies and a claim another one may slip through, and be replaced.
class DataControlOwner : public SelectionOwner {
 public:
  /// Null when there is no compositor or it has no data control.
  static std::unique_ptr<SelectionOwner> open(Changed changed);
  ~DataControlOwner() override;
  DataControlOwner(const DataControlOwner&) = delete;
  DataControlOwner& operator=(const DataControlOwner&) = delete;

  void claim(const ClipboardContents& contents, xcb_timestamp_t time) override;
  bool owns() const override { return source_ != nullptr; }
  bool isOwnWindow(xcb_window_t window) const override;
  bool stillOwns() override;
  void serveOthers(const ClipboardContents& /*contents*/, const XApplication& /*exempt*/) override {}

  bool handleEvents() override;
  void wait(int descriptor, std::optional<Clock::time_point> until) override;
  bool connected() const override { return control_->connection().isConnected(); }

  std::optional<Clock::time_point> firstFetchBy(const XApplication& application,
                                                Clock::time_point since) override;
  bool wasFetched(Clock::time_point since) const override;
  void watch(xcb_window_t /*window*/) override {}
  bool watchedIsGone() const override { return false; }
  XApplication application(xcb_window_t /*window*/) override { return {}; }

  /// To a process of its own, which serves what is owned until somebody else copies or the compositor is
  /// gone, and does nothing else: no compositor keeps what a program has copied. Here nothing is owned
  /// afterwards.
  bool handOver(Clock::time_point until) override;

  xcb_timestamp_t serverTime() override;
  Clock::time_point inOwnTime(xcb_timestamp_t time) const override;

 private:
  /// Contents on their way to a program that fetches them. They count as fetched when the program has read
  /// them: one that has asked and is busy may give up its reading for what is on the clipboard by then.
  struct Transfer {
    int descriptor;
    bool isWritten;  ///< and the descriptor is the reading end of the pipe
    Bytes bytes;
    bool isText;
    bool isOwn;  ///< this process reads it, and that is no fetch
    int claim;
    std::size_t offset;
    Clock::time_point deadline;
  };
  struct Fetch {
    bool isText;
    Clock::time_point time;
  };

  DataControlOwner(std::unique_ptr<DataControl> control, Changed changed);
  static void fetchIsAsked(void* self, zwlr_data_control_source_v1* source, const char* type, int descriptor);
  static void sourceIsReplaced(void* self, zwlr_data_control_source_v1* source);
  void letGo();
  void clipboardChanges(bool isEmpty);
  void noteOthersChange(bool isEmpty);
  [[noreturn]] void serveForGood();
  /// Writes what the pipe takes; true when the transfer is over.
  bool advance(Transfer& transfer);
  bool wasRead(const Transfer& transfer) const;
  bool isFetching() const;

  std::unique_ptr<DataControl> control_;
  Changed changed_;
  zwlr_data_control_source_v1* source_ = nullptr;
  ClipboardContents owned_;
  std::vector<Transfer> transfers_;
  std::deque<Fetch> fetches_;  // of what is owned
  int claims_ = 0;
  xcb_timestamp_t othersChanges_ = 1;  // 0 is no time
  Clock::time_point lastChange_;
  /// While a claim is under way: the changes that have come, of which one is this claim.
  std::vector<bool> emptied_;
  bool isClaiming_ = false;
};

}  // namespace lexwend::platform
