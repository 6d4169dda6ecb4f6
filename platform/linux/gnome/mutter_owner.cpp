// SPDX-License-Identifier: MIT
#include "platform/linux/gnome/mutter_owner.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/epoll.h>
#include <unistd.h>

namespace lexwend::platform {
namespace {

// What stands for the owner of the clipboard.
constexpr xcb_window_t kThisProgram = 1;
constexpr xcb_window_t kAnother = 2;

// A program that takes no piece for so long is gone or stuck.
constexpr std::chrono::seconds kStalledTransfer{10};

// An application asks a dozen times for one paste; the older fetches tell nothing new.
constexpr std::size_t kMaxFetches = 256;

// Mutter asks the new owner of the X selection for its targets before it takes it over.
constexpr std::chrono::seconds kTakeOver{1};

/// What mutter keeps nothing of, for a clipboard that was empty. A list without types it refuses.
ClipboardContents nothing() {
  return {{"x-kde-passwordManagerHint", "x-kde-passwordManagerHint", 8, {}}};
}

}  // namespace

MutterOwner::MutterOwner(std::shared_ptr<MutterRemoteDesktop> remote, OpenX openX, StartKeeper startKeeper,
                         Changed changed)
    : remote_(std::move(remote)),
      openX_(std::move(openX)),
      startKeeper_(std::move(startKeeper)),
      changed_(std::move(changed)) {}

MutterOwner::~MutterOwner() {
  for (const Transfer& transfer : transfers_) ::close(transfer.descriptor);
  remote_->close();
}

bool MutterOwner::isOwnWindow(xcb_window_t window) const {
  return window == kThisProgram;
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
  fetches_.clear();
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
  fetches_.clear();
  xIsToAppear_ = remote_->isOpen();
  x_->claim(contents, x_->serverTime());
  if (!x_->owns()) {
    xIsToAppear_ = false;
    return false;
  }
  if (!xIsToAppear_) changed_({kThisProgram, othersChanges_});
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
      lastChange_ = event.time;
      sessionOwns_ = event.isOwn;
      if (event.isOwn || (xIsToAppear_ && !event.isEmpty)) {
        if (!event.isOwn) xIsToAppear_ = false;
        changed_({kThisProgram, othersChanges_});
      } else if (!event.isInitial) {
        noteOthersChange(event.isEmpty);
      }
      break;
  }
}

/// The end of a program that had copied does not count as a copy.
void MutterOwner::noteOthersChange(bool isEmpty) {
  lastChange_ = Clock::now();
  if (!isEmpty) ++othersChanges_;
  changed_({isEmpty ? static_cast<xcb_window_t>(XCB_WINDOW_NONE) : kAnother, othersChanges_});
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
  fcntl(descriptor, F_SETFL, O_NONBLOCK);
  transfers_.push_back({descriptor, event.serial, found->bytes, isTextTarget(found->name), event.time, 0,
                        Clock::now() + kStalledTransfer});
}

MutterOwner::Progress MutterOwner::advance(Transfer& transfer) {
  while (transfer.offset < transfer.bytes.size()) {
    const ssize_t written = ::write(transfer.descriptor, transfer.bytes.data() + transfer.offset,
                                    transfer.bytes.size() - transfer.offset);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0 && errno == EAGAIN && Clock::now() < transfer.deadline) return Progress::waits;
    if (written < 0) return Progress::failed;
    transfer.offset += static_cast<std::size_t>(written);
    transfer.deadline = Clock::now() + kStalledTransfer;
  }
  return Progress::done;
}

void MutterOwner::continueTransfers() {
  std::erase_if(transfers_, [this](Transfer& transfer) {
    const Progress progress = advance(transfer);
    if (progress == Progress::waits) return false;
    ::close(transfer.descriptor);
    remote_->finishWrite(transfer.serial, progress == Progress::done);
    if (progress == Progress::done) fetches_.push_back({transfer.isText, transfer.asked});
    if (fetches_.size() > kMaxFetches) fetches_.pop_front();
    return true;
  });
}

bool MutterOwner::handleEvents() {
  const auto events = remote_->takeEvents();
  for (const MutterRemoteDesktop::Event& event : events) handle(event);
  continueTransfers();
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
  for (const Transfer& transfer : transfers_) {
    add(transfer.descriptor, EPOLLOUT);
    until = std::min(until.value_or(transfer.deadline), transfer.deadline);
  }
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

/// The first that was asked for since then. What mutter fetches for itself it asks for during the claim.
std::optional<SelectionOwner::Clock::time_point> MutterOwner::firstFetchBy(const XApplication& /*by*/,
                                                                           Clock::time_point since) {
  if (!transfers_.empty()) return std::nullopt;
  const auto first = std::find_if(fetches_.begin(), fetches_.end(),
                                  [&](const Fetch& each) { return each.isText && each.asked >= since; });
  return first == fetches_.end() ? std::nullopt : std::optional(first->asked);
}

bool MutterOwner::wasFetched(Clock::time_point since) const {
  const bool bySession =
      transfers_.empty() &&
      std::any_of(fetches_.begin(), fetches_.end(), [&](const Fetch& each) { return each.asked >= since; });
  return bySession || (x_ && x_->wasFetched(since));
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
  return othersChanges_;
}

SelectionOwner::Clock::time_point MutterOwner::inOwnTime(xcb_timestamp_t /*time*/) const {
  return lastChange_;
}

}  // namespace lexwend::platform
