// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/linux/display/x11_connection.h"
#include "platform/linux/display/x_application.h"
#include "platform/linux/selection/targets.h"

namespace lexwend::platform {

/// Owns the CLIPBOARD selection and answers its requestors, by the ICCCM (section 2), on a connection of its
/// own. One thread at a time. The calls wait for the X server and for nobody else, except where it is said;
/// after the connection is lost they do nothing.
class SelectionOwner {
 public:
  using Clock = std::chrono::steady_clock;

  /// A change of the selection's owner, whoever made it.
  struct Change {
    xcb_window_t owner = XCB_WINDOW_NONE;
    /// The time that the claim bears: with most toolkits that of the key that was pressed for it.
    xcb_timestamp_t claimed = XCB_CURRENT_TIME;
  };

  /// Null when there is no display or no XFIXES. `changed` is told of each change from within the calls.
  static std::unique_ptr<SelectionOwner> open(std::function<void(const Change&)> changed);
  ~SelectionOwner();
  SelectionOwner(const SelectionOwner&) = delete;
  SelectionOwner& operator=(const SelectionOwner&) = delete;

  /// Claims the selection as of a time of the server, which ignores the claim when somebody else has claimed
  /// it since. Empty contents leave the selection without owner.
  void claim(const ClipboardContents& contents, xcb_timestamp_t time);
  bool owns() const { return owning_; }
  bool isOwnWindow(xcb_window_t window) const { return window == window_; }
  /// The same after a look at the server: the news that somebody has claimed may be under way.
  bool stillOwns();
  /// Until the next claim every program but that one is given these contents instead.
  void serveOthers(const ClipboardContents& contents, const XApplication& exempt);

  /// Handles what has arrived, without waiting for more.
  bool handleEvents();
  /// Waits for events, or until the descriptor is readable (-1: none), or until the time; handles nothing.
  void wait(int descriptor, std::optional<Clock::time_point> until);
  bool connected() const { return xcb_connection_has_error(connection_.get()) == 0; }

  /// When the program first fetched text from the present claim since then. A fetch in pieces counts at its
  /// end.
  std::optional<Clock::time_point> firstFetchBy(const XApplication& application, Clock::time_point since);
  /// Whether anybody has fetched contents since then.
  bool wasFetched(Clock::time_point since) const;
  /// Watches a window of another program from now on, one at a time.
  void watch(xcb_window_t window);
  /// Whether that window is gone.
  bool watchedIsGone() const { return watchedIsGone_; }
  XApplication application(xcb_window_t window) { return applicationOf(connection_.get(), window); }

  /// Asks the clipboard manager to take what is owned and serves it until it has, at most until the time
  /// (freedesktop.org's clipboard manager specification). False when there is no manager.
  bool handOver(Clock::time_point until);

  /// The server's clock, which claims must bear (ICCCM 2.1).
  xcb_timestamp_t serverTime();
  /// The same moment in this process's time, by the last serverTime().
  Clock::time_point inOwnTime(xcb_timestamp_t time) const;

 private:
  struct OwnedTarget {
    xcb_atom_t target;
    xcb_atom_t type;
    std::uint8_t format;
    bool isText;
    Bytes bytes;
  };
  using OwnedTargets = std::vector<OwnedTarget>;
  /// Contents on their way to a requestor in pieces.
  struct Transfer {
    xcb_window_t requestor;
    xcb_atom_t property;
    OwnedTarget owned;
    std::size_t offset;
    Clock::time_point deadline;
  };
  struct Fetch {
    xcb_window_t requestor;
    bool isText;
    Clock::time_point time;
  };

  SelectionOwner(XcbConnection connection, xcb_screen_t& screen, std::uint8_t selectionEvent,
                 std::function<void(const Change&)> changed);
  OwnedTargets ownedTargets(const ClipboardContents& contents);
  const OwnedTargets& contentsFor(xcb_window_t requestor);
  void letGo();
  void handleEvent(const xcb_generic_event_t& event);
  void handlePropertyNotify(const xcb_property_notify_event_t& notify);
  void handleRequest(const xcb_selection_request_event_t& request);
  bool answer(const OwnedTargets& from, xcb_window_t requestor, xcb_atom_t target, xcb_atom_t property);
  bool answerMultiple(const OwnedTargets& from, xcb_window_t requestor, xcb_atom_t property);
  void startTransfer(xcb_window_t requestor, xcb_atom_t property, const OwnedTarget& owned);
  void continueTransfer(xcb_window_t requestor, xcb_atom_t property);
  void endTransfersOf(xcb_window_t requestor);
  void dropStalledTransfers();
  void stopWatching(xcb_window_t requestor);
  void noteFetch(xcb_window_t requestor, const OwnedTarget& owned);
  xcb_window_t ownerOf(xcb_atom_t selection);
  xcb_atom_t atom(std::string_view name) { return atoms_.atom(name); }

  XcbConnection connection_;
  xcb_window_t root_;
  xcb_window_t window_;
  std::size_t pieceSize_;
  std::uint8_t selectionEvent_;
  std::function<void(const Change&)> changed_;
  AtomCache atoms_;
  xcb_atom_t clipboard_;
  xcb_atom_t timeProperty_;
  OwnedTargets owned_;
  std::optional<OwnedTargets> forOthers_;
  XApplication exempt_;
  bool owning_ = false;
  xcb_timestamp_t claimTime_ = XCB_CURRENT_TIME;
  std::vector<Transfer> transfers_;
  std::deque<Fetch> fetches_;
  xcb_window_t watched_ = XCB_WINDOW_NONE;
  bool watchedIsGone_ = false;
  bool handOverAnswered_ = false;
  xcb_timestamp_t lastTime_ = XCB_CURRENT_TIME;
  Clock::time_point lastTimeHere_;
};

}  // namespace lexwend::platform
