// SPDX-License-Identifier: MIT
#include "platform/linux/wayland/data_control_reader.h"

#include <algorithm>
#include <array>

#include <fcntl.h>
#include <unistd.h>

#include "platform/linux/pipes/own_pipes.h"

namespace lexwend::platform {
namespace {

constexpr xcb_window_t kSomebody = 1;  // owns the clipboard

}  // namespace

std::unique_ptr<ClipboardReader> DataControlReader::open(std::string_view selection) {
  auto control = DataControl::open();
  if (!control) return nullptr;
  return std::unique_ptr<ClipboardReader>(new DataControlReader(std::move(control), selection == "PRIMARY"));
}

/// An offer that comes when nobody watches any more is not given an object, and the library then takes the
/// next object of the compositor for an error that ends the connection.
void DataControlReader::begin() {
  isTold_ = beginWatching();
  if (isTold_ || control_->connection().isConnected()) return;
  if (auto anew = DataControl::open()) {
    end();
    control_ = std::move(anew);
    isTold_ = beginWatching();
  }
}

bool DataControlReader::beginWatching() {
  const auto note = [this](DataControl::OfferRef offer) { offer_ = std::move(offer); };
  if (isPrimary_) {
    control_->watch({}, note);
  } else {
    control_->watch(note);
  }
  return control_->connection().roundTrip();
}

void DataControlReader::end() {
  offer_.reset();
  reading_.reset();
  control_->stopWatching();
}

xcb_window_t DataControlReader::owner() {
  control_->connection().handleEvents();
  return offer_ != nullptr ? kSomebody : static_cast<xcb_window_t>(XCB_WINDOW_NONE);
}

xcb_window_t DataControlReader::ownerOf(std::string_view /*selection*/) {
  return XCB_WINDOW_NONE;
}

ClipboardReader::Answer DataControlReader::readTargetNames(Limits& /*limits*/,
                                                           std::vector<std::string>& names) {
  reading_ = offer_;
  if (reading_ == nullptr) return Answer::ownerChanged;
  names = reading_->types();
  return names.size() > kMaxTargets ? Answer::overBudget : Answer::given;
}

ClipboardReader::Answer DataControlReader::convert(const std::string& target, Limits& limits,
                                                   ClipboardTarget& answer) {
  if (reading_ == nullptr || reading_ != offer_) return Answer::ownerChanged;
  const auto& types = reading_->types();
  if (std::find(types.begin(), types.end(), target) == types.end()) return Answer::refused;
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) return Answer::overBudget;
  // The program that writes waits for nobody where the pipe is full, and most expect that it waits.
  fcntl(ends[1], F_SETFL, 0);
  const OwnPipe own(ends[0]);
  reading_->receive(target, ends[1]);
  control_->connection().flush();
  close(ends[1]);
  const Answer result = readToEnd(ends[0], limits, answer.bytes, [&](Clock::time_point until) {
    std::vector<pollfd> waited = {{ends[0], POLLIN, 0}};
    control_->connection().wait(waited, until);
    control_->connection().handleEvents();
    return reading_ == offer_;
  });
  close(ends[0]);
  if (result == Answer::given && answer.bytes.size() == 0 && isReplaced()) return Answer::ownerChanged;
  if (result == Answer::given) {
    answer.propertyType = targetOfTypeName(target).propertyType;
    answer.format = 8;
  }
  return result;
}

/// A program that has copied anew answers nothing for what it had copied before.
bool DataControlReader::isReplaced() {
  control_->connection().roundTrip();
  return reading_ != offer_;
}

}  // namespace lexwend::platform
