// SPDX-License-Identifier: MIT
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <vector>

#include "platform/linux/gnome/remote_desktop.h"
#include "platform/linux/selection/owner.h"

namespace lexwend::platform {

/// The clipboard of mutter. What passes through is owned by the session of remote control, which mutter has
/// taken before it answers. What stays is owned over XWayland, whose clipboard is the same one, so that the
/// session can end and every type remains: of a session's contents mutter keeps one type. Without an X
/// display, or where `openX` is empty, what stays is owned by the session, which ends when somebody else
/// copies.
///
/// Mutter does not tell who fetches or who has copied: everybody is one and the same XApplication. Windows
/// stand for this program, another one and nobody. A time is the number of copies by others so far. A session
/// that was not used for kLinger and owns nothing is closed.
class MutterOwner : public SelectionOwner {
 public:
  using OpenX = std::function<std::unique_ptr<SelectionOwner>(Changed changed)>;
  static constexpr std::chrono::milliseconds kLinger{1500};

  /// Starts another process that takes the clipboard over: that of X as of a time of the X server, or by
  /// remote control where there is no time. False when it cannot be started.
  using StartKeeper = std::function<bool(xcb_timestamp_t xTime)>;

  /// `openX` gives the owner of the X display's clipboard, or null where there is none.
  MutterOwner(std::shared_ptr<MutterRemoteDesktop> remote, OpenX openX, StartKeeper startKeeper,
              Changed changed);
  ~MutterOwner() override;
  MutterOwner(const MutterOwner&) = delete;
  MutterOwner& operator=(const MutterOwner&) = delete;

  void claimForNow(const ClipboardContents& contents, xcb_timestamp_t time) override;
  void claim(const ClipboardContents& contents, xcb_timestamp_t time) override;
  bool owns() const override { return sessionOwns_ || (x_ && x_->owns()); }
  bool isOwnWindow(xcb_window_t window) const override;
  bool stillOwns() override;
  void serveOthers(const ClipboardContents& /*contents*/, const XApplication& /*exempt*/) override {}

  bool handleEvents() override;
  void wait(int descriptor, std::optional<Clock::time_point> until) override;
  /// A session can always be opened again.
  bool connected() const override { return true; }

  std::optional<Clock::time_point> firstFetchBy(const XApplication& application,
                                                Clock::time_point since) override;
  bool wasFetched(Clock::time_point since) const override;
  void watch(xcb_window_t /*window*/) override {}
  bool watchedIsGone() const override { return false; }
  XApplication application(xcb_window_t /*window*/) override { return {}; }
  /// To a process of its own: of what a program that ends has owned mutter keeps one type.
  bool handOver(Clock::time_point until) override;

  xcb_timestamp_t serverTime() override;
  Clock::time_point inOwnTime(xcb_timestamp_t time) const override;

 private:
  /// Contents on their way to a program that fetches them.
  struct Transfer {
    int descriptor;
    std::uint32_t serial;
    Bytes bytes;
    bool isText;
    Clock::time_point asked;
    std::size_t offset;
    Clock::time_point deadline;
  };
  struct Fetch {
    bool isText;
    Clock::time_point asked;
  };
  enum class Progress { waits, done, failed };

  bool ownBySession(const ClipboardContents& contents);
  bool ownByX(const ClipboardContents& contents);
  void handleSessionEvents();
  void handle(const MutterRemoteDesktop::Event& event);
  void startTransfer(const MutterRemoteDesktop::Event& event);
  void continueTransfers();
  Progress advance(Transfer& transfer);
  void noteOthersChange(bool isEmpty);
  bool mayClose() const;

  std::shared_ptr<MutterRemoteDesktop> remote_;
  OpenX openX_;
  StartKeeper startKeeper_;
  Changed changed_;
  std::unique_ptr<SelectionOwner> x_;  // made for the first contents that stay
  bool sessionOwns_ = false;
  bool ownsNothing_ = false;                        // but what stands for an empty clipboard
  bool xIsToAppear_ = false;                        // a claim over XWayland that mutter has not told yet
  std::shared_ptr<const ClipboardContents> owned_;  // by the session
  std::vector<Transfer> transfers_;
  std::deque<Fetch> fetches_;
  xcb_timestamp_t othersChanges_ = 1;  // 0 is no time
  Clock::time_point lastChange_;
};

}  // namespace lexwend::platform
