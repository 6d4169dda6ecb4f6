// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>

#include "platform/linux/gnome/remote_desktop.h"
#include "platform/linux/pipes/anonymous_owner.h"

namespace lexwend::platform {

/// The clipboard of mutter. What passes through is owned by the session of remote control, which mutter has
/// taken before it answers. What stays is owned over XWayland, whose clipboard is the same one, so that the
/// session can end and every type remains: of a session's contents mutter keeps one type. Without an X
/// display, or where `openX` is empty, what stays is owned by the session, which ends when somebody else
/// copies.
///
/// A session that was not used for kLinger and owns nothing is closed.
class MutterOwner : public AnonymousOwner {
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
  bool stillOwns() override;

  bool handleEvents() override;
  void wait(int descriptor, std::optional<Clock::time_point> until) override;
  /// A session can always be opened again.
  bool connected() const override { return true; }

  bool wasFetched(Clock::time_point since) const override;
  /// To a process of its own: of what a program that ends has owned mutter keeps one type.
  bool handOver(Clock::time_point until) override;

  xcb_timestamp_t serverTime() override;

 private:
  bool ownBySession(const ClipboardContents& contents);
  bool ownByX(const ClipboardContents& contents);
  void handleSessionEvents();
  void handle(const MutterRemoteDesktop::Event& event);
  void startTransfer(const MutterRemoteDesktop::Event& event);
  bool mayClose() const;

  std::shared_ptr<MutterRemoteDesktop> remote_;
  OpenX openX_;
  StartKeeper startKeeper_;
  std::unique_ptr<SelectionOwner> x_;  // made for the first contents that stay
  bool sessionOwns_ = false;
  bool ownsNothing_ = false;                        // but what stands for an empty clipboard
  bool xIsToAppear_ = false;                        // a claim over XWayland that mutter has not told yet
  std::shared_ptr<const ClipboardContents> owned_;  // by the session
};

}  // namespace lexwend::platform
