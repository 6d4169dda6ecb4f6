// SPDX-License-Identifier: MIT
#include "platform/linux/wayland/data_control_owner.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <limits>

#include <data-control.h>
#include <fcntl.h>
#include <unistd.h>

namespace lexwend::platform {

std::unique_ptr<SelectionOwner> DataControlOwner::open(Changed changed) {
  auto control = DataControl::open();
  if (!control) return nullptr;
  return std::unique_ptr<SelectionOwner>(new DataControlOwner(std::move(control), std::move(changed)));
}

DataControlOwner::DataControlOwner(std::unique_ptr<DataControl> control, Changed changed)
    : AnonymousOwner({}), control_(std::move(control)) {
  control_->watch([this](const DataControl::OfferRef& offer) { clipboardChanges(offer == nullptr); });
  control_->connection().roundTrip();  // what is there already is no change
  setChanged(std::move(changed));
}

DataControlOwner::~DataControlOwner() {
  letGo();
}

void DataControlOwner::letGo() {
  if (source_ != nullptr) zwlr_data_control_source_v1_destroy(source_);
  source_ = nullptr;
  owned_.clear();
  transfers_.forgetFetches();
}

void DataControlOwner::claim(const ClipboardContents& contents, xcb_timestamp_t time) {
  if (serverTime() != time || !control_->isWatching()) return;
  static constexpr zwlr_data_control_source_v1_listener kListener = {fetchIsAsked, sourceIsReplaced};
  // The old one goes last, so that the clipboard is never empty in between.
  zwlr_data_control_source_v1* const old = std::exchange(source_, nullptr);
  owned_ = contents;
  transfers_.forgetFetches();
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
  const bool isHeard = control_->connection().roundTrip();
  isClaiming_ = false;
  const bool stands = contents.empty() ? emptied_.empty() || emptied_.back() : source_ != nullptr;
  if (!stands) noteOwnChange(contents.empty());
  for (std::size_t i = 0; i + 1 < emptied_.size(); ++i) noteChangeUnlessUnheard(emptied_[stands ? i : i + 1]);
  if (stands) noteOwnChange(contents.empty());
  if (isHeard) unheardClaims_ = 0;
  if (!isHeard && emptied_.empty() && !contents.empty()) ++unheardClaims_;
}

void DataControlOwner::clipboardChanges(bool isEmpty) {
  if (isClaiming_) {
    emptied_.push_back(isEmpty);
  } else {
    noteChangeUnlessUnheard(isEmpty);
  }
}

/// A claim of this program that is told of late was noted when it was made.
void DataControlOwner::noteChangeUnlessUnheard(bool isEmpty) {
  if (unheardClaims_ > 0 && !isEmpty) {
    --unheardClaims_;
  } else {
    noteOthersChange(isEmpty);
  }
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
  owner.transfers_.start(descriptor, *found, Clock::now());
}

bool DataControlOwner::handleEvents() {
  const bool any = control_->connection().handleEvents();
  transfers_.proceed();
  control_->connection().flush();
  return any;
}

void DataControlOwner::wait(int descriptor, std::optional<Clock::time_point> until) {
  std::vector<pollfd> waited = {{descriptor, POLLIN, 0}};
  for (const int pipe : transfers_.pipes()) waited.push_back({pipe, POLLOUT, 0});
  until = transfers_.earlier(until);
  control_->connection().wait(waited, until);
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
    transfers_.abandon();
    letGo();
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
  for (const int pipe : transfers_.pipes()) kept.push_back(static_cast<unsigned>(pipe));
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
  return copiesByOthers();
}

}  // namespace lexwend::platform
