// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/linux/display/x11_connection.h"
#include "platform/linux/display/x_application.h"
#include "platform/linux/selection/owner.h"
#include "platform/linux/selection/targets.h"

namespace lexwend::platform {

/// The CLIPBOARD selection by the ICCCM (section 2).
class XSelectionOwner final : public SelectionOwner {
 public:
  /// Null when there is no display or no XFIXES.
  static std::unique_ptr<SelectionOwner> open(Changed changed);
  ~XSelectionOwner() override;
  XSelectionOwner(const XSelectionOwner&) = delete;
  XSelectionOwner& operator=(const XSelectionOwner&) = delete;

  void claim(const ClipboardContents& contents, xcb_timestamp_t time) override;
  bool owns() const override { return owning_; }
  bool isOwnWindow(xcb_window_t window) const override { return window == window_; }
  bool stillOwns() override;
  void serveOthers(const ClipboardContents& contents, const XApplication& exempt) override;

  bool handleEvents() override;
  void wait(int descriptor, std::optional<Clock::time_point> until) override;
  bool connected() const override { return xcb_connection_has_error(connection_.get()) == 0; }

  std::optional<Clock::time_point> firstFetchBy(const XApplication& application,
                                                Clock::time_point since) override;
  bool wasFetched(Clock::time_point since) const override;
  void watch(xcb_window_t window) override;
  bool watchedIsGone() const override { return watchedIsGone_; }
  XApplication application(xcb_window_t window) override { return applicationOf(connection_.get(), window); }

  /// To the clipboard manager, and serves it until it has taken all (freedesktop.org's clipboard manager
  /// specification).
  bool handOver(Clock::time_point until) override;

  /// ICCCM 2.1.
  xcb_timestamp_t serverTime() override;
  xcb_timestamp_t timeOfLook() override;
  Clock::time_point inOwnTime(xcb_timestamp_t time) const override;

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

  XSelectionOwner(XcbConnection connection, xcb_screen_t& screen, std::uint8_t selectionEvent,
                  Changed changed);
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
  Changed changed_;
  AtomCache atoms_;
  xcb_atom_t clipboard_;
  xcb_atom_t timeProperty_;
  OwnedTargets owned_;
  std::optional<OwnedTargets> forOthers_;
  XApplication exempt_;
  bool owning_ = false;
  xcb_timestamp_t claimTime_ = XCB_CURRENT_TIME;
  xcb_timestamp_t lastClaim_ = XCB_CURRENT_TIME;  // by anybody
  std::vector<Transfer> transfers_;
  std::deque<Fetch> fetches_;
  xcb_window_t watched_ = XCB_WINDOW_NONE;
  bool watchedIsGone_ = false;
  bool handOverAnswered_ = false;
  xcb_timestamp_t lastTime_ = XCB_CURRENT_TIME;
  Clock::time_point lastTimeHere_;
};

}  // namespace lexwend::platform
