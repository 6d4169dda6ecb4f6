// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>
#include <optional>

#include "platform/linux/display/x_application.h"
#include "platform/linux/selection/targets.h"

namespace lexwend::platform {

/// Owns the clipboard and answers those who fetch it, on a connection of its own to the display. One thread
/// at a time. The calls wait for the display and for nobody else, except where it is said; after the
/// connection is lost they do nothing.
///
/// Windows and times are those of X. A display that tells nobody's windows or times gives what stands for
/// them and tells less: see the class for it.
class SelectionOwner {
 public:
  using Clock = std::chrono::steady_clock;

  /// A change of the selection's owner, whoever made it.
  struct Change {
    xcb_window_t owner = XCB_WINDOW_NONE;
    /// The time that the claim bears: with most toolkits of X that of the key that was pressed for it.
    xcb_timestamp_t claimed = XCB_CURRENT_TIME;
  };
  /// Is told of each change from within the calls.
  using Changed = std::function<void(const Change&)>;

  virtual ~SelectionOwner() = default;

  /// Claims the selection as of a time of the display, which ignores the claim when somebody else has claimed
  /// it since. Empty contents leave the selection without owner.
  virtual void claim(const ClipboardContents& contents, xcb_timestamp_t time) = 0;
  /// The same for contents that pass through, where the display has a way of its own for them.
  virtual void claimForNow(const ClipboardContents& contents, xcb_timestamp_t time) { claim(contents, time); }
  virtual bool owns() const = 0;
  virtual bool isOwnWindow(xcb_window_t window) const = 0;
  /// owns() after a look at the display: the news that somebody has claimed may be under way.
  virtual bool stillOwns() = 0;
  /// Until the next claim every program but that one is given these contents instead, where the display
  /// tells programs apart.
  virtual void serveOthers(const ClipboardContents& contents, const XApplication& exempt) = 0;

  /// Handles what has arrived, without waiting for more.
  virtual bool handleEvents() = 0;
  /// Waits for events, or until the descriptor is readable (-1: none), or until the time; handles nothing.
  virtual void wait(int descriptor, std::optional<Clock::time_point> until) = 0;
  virtual bool connected() const = 0;

  /// When the program first fetched text from the present claim since then. A fetch in pieces counts at its
  /// end.
  virtual std::optional<Clock::time_point> firstFetchBy(const XApplication& application,
                                                        Clock::time_point since) = 0;
  /// Whether anybody has fetched contents since then.
  virtual bool wasFetched(Clock::time_point since) const = 0;
  /// Watches a window of another program from now on, one at a time.
  virtual void watch(xcb_window_t window) = 0;
  /// Whether that window is gone.
  virtual bool watchedIsGone() const = 0;
  virtual XApplication application(xcb_window_t window) = 0;

  /// At the end of the program: hands what is owned to somebody who goes on serving it, which may take until
  /// the time. False when there is nobody.
  virtual bool handOver(Clock::time_point until) = 0;

  /// The display's clock, which claims must bear.
  virtual xcb_timestamp_t serverTime() = 0;
  /// A time for a claim that is to take the place of what is there now, and of nothing that anybody claims
  /// from now on. The display's clock may be coarse.
  virtual xcb_timestamp_t timeOfLook() { return serverTime(); }
  /// The same moment in this process's time, by the last serverTime().
  virtual Clock::time_point inOwnTime(xcb_timestamp_t time) const = 0;
};

}  // namespace lexwend::platform
