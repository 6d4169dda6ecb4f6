// SPDX-License-Identifier: MIT
#include "platform/linux/wayland/data_control_owner.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <limits>
#include <string>
#include <utility>

#include <data-control.h>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "platform/linux/wayland/own_pipes.h"

namespace lexwend::platform {
namespace {

// What stands for the owner of the clipboard.
constexpr xcb_window_t kThisProgram = 1;
constexpr xcb_window_t kAnother = 2;

// A program that takes no piece for so long is gone or stuck.
constexpr std::chrono::seconds kStalledTransfer{10};
// Nobody tells that a pipe was read.
constexpr std::chrono::milliseconds kLookAtPipe{20};

// An application asks a dozen times for one paste; the older fetches tell nothing new.
constexpr std::size_t kMaxFetches = 256;

}  // namespace

std::unique_ptr<SelectionOwner> DataControlOwner::open(Changed changed) {
  auto control = DataControl::open();
  if (!control) return nullptr;
  return std::unique_ptr<SelectionOwner>(new DataControlOwner(std::move(control), std::move(changed)));
}

DataControlOwner::DataControlOwner(std::unique_ptr<DataControl> control, Changed changed)
    : control_(std::move(control)) {
  control_->watch([this](const DataControl::OfferRef& offer) { clipboardChanges(offer == nullptr); });
  control_->connection().roundTrip();  // what is there already is no change
  changed_ = std::move(changed);
}

DataControlOwner::~DataControlOwner() {
  letGo();
  for (const Transfer& transfer : transfers_) close(transfer.descriptor);
}

bool DataControlOwner::isOwnWindow(xcb_window_t window) const {
  return window == kThisProgram;
}

void DataControlOwner::letGo() {
  if (source_ != nullptr) zwlr_data_control_source_v1_destroy(source_);
  source_ = nullptr;
  owned_.clear();
  fetches_.clear();
}

void DataControlOwner::claim(const ClipboardContents& contents, xcb_timestamp_t time) {
  if (serverTime() != time || !control_->isWatching()) return;
  static constexpr zwlr_data_control_source_v1_listener kListener = {fetchIsAsked, sourceIsReplaced};
  // The old one goes last, so that the clipboard is never empty in between.
  zwlr_data_control_source_v1* const old = std::exchange(source_, nullptr);
  owned_ = contents;
  fetches_.clear();
  ++claims_;
  if (!contents.empty()) {
    source_ = zwlr_data_control_manager_v1_create_data_source(control_->manager());
    zwlr_data_control_source_v1_add_listener(source_, &kListener, this);
    for (const ClipboardTarget& target : contents) {
      zwlr_data_control_source_v1_offer(source_, target.name.c_str());
    }
  }
  zwlr_data_control_device_v1_set_selection(control_->device(), source_);
  if (old != nullptr) zwlr_data_control_source_v1_destroy(old);

  // One of the changes that come until the answer is this claim: the last as long as the claim stands.
  emptied_.clear();
  isClaiming_ = true;
  control_->connection().roundTrip();
  isClaiming_ = false;
  const bool stands = contents.empty() ? emptied_.empty() || emptied_.back() : source_ != nullptr;
  const xcb_window_t owner = contents.empty() ? static_cast<xcb_window_t>(XCB_WINDOW_NONE) : kThisProgram;
  if (!stands) changed_({owner, othersChanges_});
  for (std::size_t i = 0; i + 1 < emptied_.size(); ++i) noteOthersChange(emptied_[stands ? i : i + 1]);
  if (stands) changed_({owner, othersChanges_});
}

void DataControlOwner::clipboardChanges(bool isEmpty) {
  lastChange_ = Clock::now();
  if (isClaiming_) {
    emptied_.push_back(isEmpty);
  } else {
    noteOthersChange(isEmpty);
  }
}

/// The end of a program that had copied does not count as a copy.
void DataControlOwner::noteOthersChange(bool isEmpty) {
  if (!changed_) return;
  if (!isEmpty) ++othersChanges_;
  changed_({isEmpty ? static_cast<xcb_window_t>(XCB_WINDOW_NONE) : kAnother, othersChanges_});
}

bool DataControlOwner::stillOwns() {
  control_->connection().roundTrip();
  return owns();
}

void DataControlOwner::sourceIsReplaced(void* self, zwlr_data_control_source_v1* source) {
  auto& owner = *static_cast<DataControlOwner*>(self);
  if (source == owner.source_) owner.letGo();
}

void DataControlOwner::fetchIsAsked(void* self, zwlr_data_control_source_v1* source, const char* type,
                                    int descriptor) {
  auto& owner = *static_cast<DataControlOwner*>(self);
  const auto found = std::find_if(owner.owned_.begin(), owner.owned_.end(),
                                  [type](const ClipboardTarget& target) { return target.name == type; });
  if (source != owner.source_ || found == owner.owned_.end()) {
    close(descriptor);
    return;
  }
  fcntl(descriptor, F_SETFL, O_NONBLOCK);
  owner.transfers_.push_back({.descriptor = descriptor,
                              .isWritten = false,
                              .bytes = found->bytes,
                              .isText = isTextTarget(found->name),
                              .isOwn = OwnPipe::isEnd(descriptor),
                              .claim = owner.claims_,
                              .offset = 0,
                              .deadline = Clock::now() + kStalledTransfer});
}

bool DataControlOwner::advance(Transfer& transfer) {
  while (!transfer.isWritten && transfer.offset < transfer.bytes.size()) {
    const ssize_t written = write(transfer.descriptor, transfer.bytes.data() + transfer.offset,
                                  transfer.bytes.size() - transfer.offset);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0 && errno == EAGAIN) return Clock::now() >= transfer.deadline;
    if (written < 0) return true;  // nobody wants it any more
    transfer.offset += static_cast<std::size_t>(written);
    transfer.deadline = Clock::now() + kStalledTransfer;
  }
  if (!transfer.isWritten) {
    // Whoever reads meets the end only where no writing end is open.
    const std::string pipe = "/proc/self/fd/" + std::to_string(transfer.descriptor);
    const int readingEnd = ::open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    close(std::exchange(transfer.descriptor, readingEnd));
    transfer.isWritten = true;
  }
  if (transfer.isOwn || transfer.claim != claims_) return true;
  if (!wasRead(transfer)) return Clock::now() >= transfer.deadline;
  fetches_.push_back({transfer.isText, Clock::now()});
  if (fetches_.size() > kMaxFetches) fetches_.pop_front();
  return true;
}

/// What is owned now.
bool DataControlOwner::isFetching() const {
  return std::any_of(transfers_.begin(), transfers_.end(), [this](const Transfer& transfer) {
    return !transfer.isOwn && transfer.claim == claims_;
  });
}

/// Or cannot be told: it is no pipe.
bool DataControlOwner::wasRead(const Transfer& transfer) const {
  int unread = 0;
  return ioctl(transfer.descriptor, FIONREAD, &unread) != 0 || unread == 0;
}

bool DataControlOwner::handleEvents() {
  const bool any = control_->connection().handleEvents();
  std::erase_if(transfers_, [this](Transfer& transfer) {
    const bool isOver = advance(transfer);
    if (isOver) close(transfer.descriptor);
    return isOver;
  });
  control_->connection().flush();
  return any;
}

void DataControlOwner::wait(int descriptor, std::optional<Clock::time_point> until) {
  std::vector<pollfd> waited = {{descriptor, POLLIN, 0}};
  for (const Transfer& transfer : transfers_) {
    if (!transfer.isWritten) waited.push_back({transfer.descriptor, POLLOUT, 0});
    const auto due = transfer.isWritten ? Clock::now() + kLookAtPipe : transfer.deadline;
    until = std::min(until.value_or(due), due);
  }
  control_->connection().wait(waited, until);
}

std::optional<SelectionOwner::Clock::time_point> DataControlOwner::firstFetchBy(const XApplication& /*by*/,
                                                                                Clock::time_point since) {
  if (isFetching()) return std::nullopt;
  const auto first = std::find_if(fetches_.begin(), fetches_.end(),
                                  [&](const Fetch& each) { return each.isText && each.time >= since; });
  return first == fetches_.end() ? std::nullopt : std::optional(first->time);
}

bool DataControlOwner::wasFetched(Clock::time_point since) const {
  return !isFetching() &&
         std::any_of(fetches_.begin(), fetches_.end(), [&](const Fetch& each) { return each.time >= since; });
}

bool DataControlOwner::handOver(Clock::time_point /*until*/) {
  if (!stillOwns()) return false;
  const int nothing = ::open("/dev/null", O_RDWR | O_CLOEXEC);
  const pid_t process = nothing < 0 ? -1 : fork();
  if (process == 0) {
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) dup2(nothing, standard);
    serveForGood();
  }
  if (process > 0) {
    // The connection is the other process's now. What this one would still send must not come there.
    dup2(nothing, control_->connection().descriptor());
    control_->connection().abandon();
    for (const Transfer& transfer : transfers_) close(transfer.descriptor);
    transfers_.clear();
    source_ = nullptr;
  }
  if (nothing >= 0) close(nothing);
  return process > 0;
}

/// Runs in a copy of this process that has this thread only.
void DataControlOwner::serveForGood() {
  setsid();
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) ::signal(signal, SIG_DFL);
  ::signal(SIGPIPE, SIG_IGN);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  // What else is open is the program's: its lock, its log, its connections.
  const auto connection = static_cast<unsigned>(control_->connection().descriptor());
  std::vector<unsigned> kept = {STDERR_FILENO, connection};
  for (const Transfer& transfer : transfers_) kept.push_back(static_cast<unsigned>(transfer.descriptor));
  std::sort(kept.begin(), kept.end());
  for (std::size_t i = 0; i < kept.size(); ++i) {
    const unsigned next = i + 1 < kept.size() ? kept[i + 1] : std::numeric_limits<unsigned>::max();
    if (kept[i] + 1 < next) close_range(kept[i] + 1, next - 1, 0);
  }
  while (connected() && (owns() || !transfers_.empty())) {
    wait(-1, std::nullopt);
    handleEvents();
  }
  _exit(EXIT_SUCCESS);
}

xcb_timestamp_t DataControlOwner::serverTime() {
  control_->connection().roundTrip();
  return othersChanges_;
}

SelectionOwner::Clock::time_point DataControlOwner::inOwnTime(xcb_timestamp_t /*time*/) const {
  return lastChange_;
}

}  // namespace lexwend::platform
