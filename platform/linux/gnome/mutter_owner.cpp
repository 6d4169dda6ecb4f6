// SPDX-License-Identifier: MIT
#include "platform/linux/gnome/mutter_owner.h"

#include <algorithm>
#include <utility>

#include <poll.h>
#include <sys/epoll.h>
#include <unistd.h>

namespace lexwend::platform {
namespace {

// Mutter asks the new owner of the X selection for its targets before it takes it over.
constexpr std::chrono::seconds kTakeOver{1};

/// What mutter keeps nothing of, for a clipboard that was empty. A list without types it refuses.
ClipboardContents nothing() {
  return {{"x-kde-passwordManagerHint", "x-kde-passwordManagerHint", 8, {}}};
}

}  // namespace

MutterOwner::MutterOwner(std::shared_ptr<MutterRemoteDesktop> remote, OpenX openX, StartKeeper startKeeper,
                         Changed changed)
    : AnonymousOwner(std::move(changed)),
      remote_(std::move(remote)),
      openX_(std::move(openX)),
      startKeeper_(std::move(startKeeper)) {}

MutterOwner::~MutterOwner() {
  transfers_.abandon();
  remote_->close();
}

void MutterOwner::claimForNow(const ClipboardContents& contents, xcb_timestamp_t time) {
  if (serverTime() == time) ownBySession(contents);
}

void MutterOwner::claim(const ClipboardContents& contents, xcb_timestamp_t time) {
  if (serverTime() != time) return;
  if (contents.empty()) {
    ownsNothing_ = ownBySession(nothing());
  } else if (!ownByX(contents)) {
    ownBySession(contents);
  }
}

bool MutterOwner::ownBySession(const ClipboardContents& contents) {
  owned_ = std::make_shared<const ClipboardContents>(contents);
  ownsNothing_ = false;
  transfers_.forgetFetches();
  const bool owns = remote_->own(owned_);
  handleSessionEvents();  // mutter has told the change before it answered
  return owns;
}

bool MutterOwner::ownByX(const ClipboardContents& contents) {
  if (!openX_) return false;
  if (!x_ || !x_->connected()) {
    x_ = openX_([this](const Change& change) {
      // While the session is open mutter tells it.
      const bool isOwn = x_ && x_->isOwnWindow(change.owner);
      if (!remote_->isOpen() && !isOwn) noteOthersChange(change.owner == XCB_WINDOW_NONE);
    });
  }
  if (!x_) return false;
  transfers_.forgetFetches();
  xIsToAppear_ = remote_->isOpen();
  x_->claim(contents, x_->serverTime());
  if (!x_->owns()) {
    xIsToAppear_ = false;
    return false;
  }
  if (!xIsToAppear_) noteOwnChange(false);
  const Clock::time_point end = Clock::now() + kTakeOver;
  while (xIsToAppear_ && x_->owns() && remote_->isOpen() && Clock::now() < end) {
    handleEvents();
    if (xIsToAppear_) wait(-1, end);
  }
  xIsToAppear_ = false;
  return true;
}

bool MutterOwner::stillOwns() {
  remote_->settle();
  handleSessionEvents();
  return sessionOwns_ || (x_ && x_->stillOwns());
}

void MutterOwner::handleSessionEvents() {
  for (const MutterRemoteDesktop::Event& event : remote_->takeEvents()) handle(event);
}

void MutterOwner::handle(const MutterRemoteDesktop::Event& event) {
  switch (event.kind) {
    case MutterRemoteDesktop::EventKind::opened:
      break;
    case MutterRemoteDesktop::EventKind::closed:
      sessionOwns_ = false;
      break;
    case MutterRemoteDesktop::EventKind::fetch:
      startTransfer(event);
      break;
    case MutterRemoteDesktop::EventKind::changed:
      sessionOwns_ = event.isOwn;
      if (event.isOwn || (xIsToAppear_ && !event.isEmpty)) {
        if (!event.isOwn) xIsToAppear_ = false;
        noteOwnChange(false);
      } else if (!event.isInitial) {
        noteOthersChange(event.isEmpty);
      }
      break;
  }
}

void MutterOwner::startTransfer(const MutterRemoteDesktop::Event& event) {
  if (!owned_) return;
  const auto found = std::find_if(owned_->begin(), owned_->end(),
                                  [&](const ClipboardTarget& target) { return target.name == event.type; });
  const int descriptor = remote_->write(event.serial);
  if (descriptor < 0) return;
  if (found == owned_->end()) {
    ::close(descriptor);
    remote_->finishWrite(event.serial, false);
    return;
  }
  transfers_.start(descriptor, *found, event.time, [this, serial = event.serial](bool isWritten) {
    remote_->finishWrite(serial, isWritten);
  });
}

bool MutterOwner::handleEvents() {
  const auto events = remote_->takeEvents();
  for (const MutterRemoteDesktop::Event& event : events) handle(event);
  transfers_.proceed();
  const bool xHad = x_ && x_->handleEvents();
  if (mayClose()) remote_->closeIfUnusedFor(kLinger);
  return !events.empty() || xHad;
}

bool MutterOwner::mayClose() const {
  return remote_->isOpen() && (!sessionOwns_ || ownsNothing_) && transfers_.empty();
}

void MutterOwner::wait(int descriptor, std::optional<Clock::time_point> until) {
  if (mayClose()) until = std::min(until.value_or(Clock::time_point::max()), remote_->lastUse() + kLinger);
  const int all = epoll_create1(EPOLL_CLOEXEC);
  const auto add = [all](int waited, std::uint32_t events) {
    epoll_event event{};
    event.events = events;
    if (waited >= 0) epoll_ctl(all, EPOLL_CTL_ADD, waited, &event);
  };
  add(descriptor, EPOLLIN);
  add(remote_->descriptor(), EPOLLIN);
  for (const int pipe : transfers_.pipes()) add(pipe, EPOLLOUT);
  until = transfers_.earlier(until);
  if (x_) {
    x_->wait(all, until);
  } else {
    int timeout = -1;
    if (until) {
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(*until - Clock::now());
      timeout = static_cast<int>(std::max<std::int64_t>(left.count(), 0));
    }
    pollfd waited{all, POLLIN, 0};
    poll(&waited, 1, timeout);
  }
  ::close(all);
}

bool MutterOwner::wasFetched(Clock::time_point since) const {
  return AnonymousOwner::wasFetched(since) || (x_ && x_->wasFetched(since));
}

bool MutterOwner::handOver(Clock::time_point until) {
  if (ownsNothing_) return true;
  const xcb_timestamp_t xTime = x_ && x_->owns() ? x_->serverTime() : XCB_CURRENT_TIME;
  if (!stillOwns() || !startKeeper_ || !startKeeper_(xTime)) return false;
  while (owns() && Clock::now() < until) {
    wait(-1, until);
    handleEvents();
  }
  return !owns();
}

xcb_timestamp_t MutterOwner::serverTime() {
  remote_->settle();
  handleSessionEvents();
  return copiesByOthers();
}

}  // namespace lexwend::platform
