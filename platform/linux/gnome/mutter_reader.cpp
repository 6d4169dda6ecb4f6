// SPDX-License-Identifier: MIT
#include "platform/linux/gnome/mutter_reader.h"

#include <algorithm>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace lexwend::platform {
namespace {

constexpr xcb_window_t kSomebody = 1;  // owns the clipboard

/// How long a read may go on before it is looked whether somebody else has copied.
constexpr std::chrono::milliseconds kLookAgain{20};

}  // namespace

void MutterReader::begin() {
  remote_->open();
}

xcb_window_t MutterReader::owner() {
  return remote_->offer() != nullptr ? kSomebody : static_cast<xcb_window_t>(XCB_WINDOW_NONE);
}

xcb_window_t MutterReader::ownerOf(std::string_view /*selection*/) {
  return XCB_WINDOW_NONE;
}

ClipboardReader::Answer MutterReader::readTargetNames(Limits& /*limits*/, std::vector<std::string>& names) {
  reading_ = remote_->offer();
  if (reading_ == nullptr) return Answer::ownerChanged;
  if (reading_->types.size() > kMaxTargets) return Answer::overBudget;
  for (const std::string& type : reading_->types) {
    if (std::find(names.begin(), names.end(), type) == names.end()) names.push_back(type);
  }
  return Answer::given;
}

ClipboardReader::Answer MutterReader::convert(const std::string& target, Limits& limits,
                                              ClipboardTarget& answer) {
  if (reading_ == nullptr || reading_ != remote_->offer()) return Answer::ownerChanged;
  const auto& types = reading_->types;
  if (std::find(types.begin(), types.end(), target) == types.end()) return Answer::refused;
  if (const auto& own = reading_->own) {
    const auto found = std::find_if(own->begin(), own->end(),
                                    [&](const ClipboardTarget& each) { return each.name == target; });
    if (found == own->end()) return Answer::refused;
    answer = *found;
    return Answer::given;
  }
  const int descriptor = remote_->read(target, limits.nextDeadline());
  if (descriptor < 0) return reading_ == remote_->offer() ? Answer::refused : Answer::ownerChanged;
  fcntl(descriptor, F_SETFL, O_NONBLOCK);
  const Answer result = readToEnd(descriptor, limits, answer.bytes, [&](Clock::time_point until) {
    remote_->noteUse();
    pollfd waited{descriptor, POLLIN, 0};
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now());
    poll(&waited, 1, static_cast<int>(std::clamp(left, std::chrono::milliseconds(0), kLookAgain).count()));
    return reading_ == remote_->offer();
  });
  close(descriptor);
  // A program that has copied anew answers nothing for what it had copied before.
  if (result == Answer::given && answer.bytes.size() == 0 && reading_ != remote_->offer()) {
    return Answer::ownerChanged;
  }
  if (result == Answer::given) {
    answer.propertyType = targetOfTypeName(target).propertyType;
    answer.format = 8;
  }
  return result;
}

}  // namespace lexwend::platform
