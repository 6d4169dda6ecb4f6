// SPDX-License-Identifier: MIT
#pragma once

#include <utility>

#include "platform/linux/pipes/pipe_transfers.h"
#include "platform/linux/selection/owner.h"

namespace lexwend::platform {

/// An owner on a display that tells neither who copies nor who fetches, and that passes contents through
/// pipes. Everybody is one and the same XApplication, so nobody can be given other contents than the program
/// that pastes. Windows stand for this program, another one and nobody. Such a display tells no times either:
/// a time is the number of copies by others so far, and a copy counts as made when it was heard of.
class AnonymousOwner : public SelectionOwner {
 public:
  bool isOwnWindow(xcb_window_t window) const override { return window == kThisProgram; }
  void serveOthers(const ClipboardContents& /*contents*/, const XApplication& /*exempt*/) override {}
  std::optional<Clock::time_point> firstFetchBy(const XApplication& /*application*/,
                                                Clock::time_point since) override {
    return transfers_.firstTextSince(since);
  }
  bool wasFetched(Clock::time_point since) const override { return transfers_.anySince(since); }
  void watch(xcb_window_t /*window*/) override {}
  bool watchedIsGone() const override { return false; }
  XApplication application(xcb_window_t /*window*/) override { return {}; }
  Clock::time_point inOwnTime(xcb_timestamp_t /*time*/) const override { return lastChange_; }

 protected:
  explicit AnonymousOwner(Changed changed) : changed_(std::move(changed)) {}

  xcb_timestamp_t copiesByOthers() const { return copiesByOthers_; }
  /// Changes are told; none is before.
  void setChanged(Changed changed) { changed_ = std::move(changed); }
  void noteOwnChange(bool isEmpty) { noteChange(isEmpty, kThisProgram); }
  /// The end of a program that had copied leaves nothing and does not count as a copy.
  void noteOthersChange(bool isEmpty) {
    if (!isEmpty) ++copiesByOthers_;
    noteChange(isEmpty, kAnother);
  }

  PipeTransfers transfers_;

 private:
  static constexpr xcb_window_t kThisProgram = 1;
  static constexpr xcb_window_t kAnother = 2;

  void noteChange(bool isEmpty, xcb_window_t owner) {
    lastChange_ = Clock::now();
    if (changed_) changed_({isEmpty ? static_cast<xcb_window_t>(XCB_WINDOW_NONE) : owner, copiesByOthers_});
  }

  Changed changed_;
  xcb_timestamp_t copiesByOthers_ = 1;  // 0 is no time
  Clock::time_point lastChange_;
};

}  // namespace lexwend::platform
