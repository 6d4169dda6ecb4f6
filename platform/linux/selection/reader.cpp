// SPDX-License-Identifier: MIT
#include "platform/linux/selection/reader.h"

#include <cerrno>
#include <limits>
#include <thread>

#include <unistd.h>

#include "platform/linux/display/latin1.h"

namespace lexwend::platform {
namespace {

// Between two requests for a text that was refused.
constexpr std::chrono::milliseconds kPauseAfterRefusal{10};

// A program that is copying anew gives nothing for what it had copied before. For so long an empty text may
// be that, and is asked for again.
constexpr std::chrono::milliseconds kCopiesAnew{50};

// An encoding that took longer was not made for nothing, and the next would cost the same again.
constexpr std::chrono::milliseconds kQuickEncoding{100};

// Of another program's words in the log.
constexpr std::size_t kMaxNameInLog = 200;

std::string printable(std::string_view name) {
  std::string printable(name.substr(0, kMaxNameInLog));
  std::replace_if(
      printable.begin(), printable.end(), [](unsigned char c) { return c < ' ' || c > '~'; }, '?');
  return printable;
}

}  // namespace

ClipboardReader::Result ClipboardReader::readAll(const Budget& budget) {
  begin();
  Result result = readAllTargets(budget);
  // Where the display does not answer, an owner that is not known is not one that does not exist.
  if (result.outcome == Outcome::noOwner && !answers()) result.outcome = Outcome::overBudget;
  end();
  return result;
}

ClipboardReader::Result ClipboardReader::readAllTargets(const Budget& budget) {
  const Clock::time_point start = Clock::now();
  while (owner() != XCB_WINDOW_NONE) {
    Result result;
    switch (readEverything(budget, start, result)) {
      case Answer::given:
      case Answer::refused:
        result.outcome = Outcome::complete;
        return result;
      case Answer::overBudget:
        giveUp();
        result.outcome = Outcome::overBudget;
        return result;
      case Answer::ownerChanged:
        giveUp();
        break;
    }
    if (Clock::now() >= start + budget.time) return {Outcome::overBudget, {}, {}};
  }
  return {};
}

ClipboardReader::Answer ClipboardReader::readEverything(const Budget& budget, Clock::time_point start,
                                                        Result& result) {
  Limits limits{start + budget.time, budget.silence, budget.bytes};
  std::vector<std::string> names;
  const Answer listAnswer = readTargetNames(limits, names);
  if (listAnswer == Answer::refused) {
    names = {"UTF8_STRING", "STRING"};
  } else if (listAnswer != Answer::given) {
    return listAnswer;
  }
  std::vector<ClipboardTarget> targets;
  for (const std::string& name : names) {
    if (!isProtocolTarget(name)) targets.push_back({name, {}, 0, {}});
  }
  for (ClipboardTarget& target : targets) {
    if (isPicture(target.name)) continue;
    const Answer answer = convert(target.name, limits, target);
    if (answer != Answer::given && answer != Answer::refused) return answer;
  }
  const Answer picture = readPicture(budget, start, limits, targets, result);
  if (picture != Answer::given) return picture;
  for (ClipboardTarget& target : targets) {
    const bool isGiven = !target.propertyType.empty();
    if (isGiven) result.contents.push_back(std::move(target));
  }
  return Answer::given;
}

/// One encoding that loses nothing restores a picture. Where there is none, all that there are.
ClipboardReader::Answer ClipboardReader::readPicture(const Budget& budget, Clock::time_point start,
                                                     Limits& limits, std::vector<ClipboardTarget>& targets,
                                                     Result& result) {
  std::vector<ClipboardTarget*> encodings;
  for (ClipboardTarget& target : targets) {
    if (isPicture(target.name)) encodings.push_back(&target);
  }
  const auto rank = [](const ClipboardTarget* target) {
    return losslessRank(target->name).value_or(std::numeric_limits<int>::max());
  };
  std::stable_sort(encodings.begin(), encodings.end(),
                   [&](const auto* one, const auto* other) { return rank(one) < rank(other); });
  const std::chrono::milliseconds pictureTime = std::max(budget.time, budget.picture);
  bool isKept = false;
  bool isSlow = false;
  for (ClipboardTarget* target : encodings) {
    if (isKept && isSlow) {
      result.leftOut.push_back(printable(target->name));
      continue;
    }
    const Clock::time_point before = Clock::now();
    // An encoder says nothing before it has finished, and one of the further encodings must not cost more
    // than they are worth.
    Limits own = isKept ? limits : Limits{start + pictureTime, pictureTime, limits.bytesLeft};
    const Answer answer = convert(target->name, own, *target);
    if (answer == Answer::ownerChanged) return answer;
    if (answer == Answer::overBudget) {
      if (!isKept) return answer;
      giveUp();
      *target = {target->name, {}, 0, {}};
      result.leftOut.push_back(printable(target->name));
      isSlow = true;
    } else {
      limits.bytesLeft = own.bytesLeft;
    }
    // The owner may be the application in front: while it encodes it does not copy.
    isSlow = isSlow || Clock::now() - before > kQuickEncoding || Clock::now() >= limits.end;
    isKept = isKept || (answer == Answer::given && losslessRank(target->name));
  }
  return Answer::given;
}

std::optional<std::string> ClipboardReader::readText(const Budget& budget,
                                                     const std::function<bool(xcb_window_t owner)>& accepts) {
  begin();
  auto text = readAcceptedText(budget, accepts);
  end();
  return text;
}

std::optional<std::string> ClipboardReader::readAcceptedText(
    const Budget& budget, const std::function<bool(xcb_window_t owner)>& accepts) {
  const Clock::time_point deadline = Clock::now() + budget.time;
  std::optional<Clock::time_point> emptyUntil;
  do {
    const xcb_window_t current = owner();
    if (current == XCB_WINDOW_NONE || (accepts && !accepts(current))) return std::nullopt;
    Limits limits{deadline, budget.silence, budget.bytes};
    std::optional<std::string> text;
    switch (readTextOnce(limits, text)) {
      case Answer::given:
        if (!text || !text->empty()) return text;
        if (!emptyUntil) emptyUntil = std::min(Clock::now() + kCopiesAnew, deadline);
        if (Clock::now() >= *emptyUntil) return text;
        std::this_thread::sleep_for(kPauseAfterRefusal);
        break;
      case Answer::refused:  // for now
        std::this_thread::sleep_for(kPauseAfterRefusal);
        break;
      case Answer::ownerChanged:
        giveUp();
        break;
      case Answer::overBudget:
        giveUp();
        return std::nullopt;
    }
  } while (Clock::now() < deadline);
  return std::nullopt;
}

/// Given also where there is no text to be had; refused where it is to be asked for again.
ClipboardReader::Answer ClipboardReader::readTextOnce(Limits& limits, std::optional<std::string>& text) {
  std::vector<std::string> names;
  const Answer listAnswer = readTargetNames(limits, names);
  if (listAnswer != Answer::given && listAnswer != Answer::refused) return listAnswer;
  if (std::any_of(names.begin(), names.end(), isOfFiles)) return Answer::given;
  const bool offersUtf8 = std::find(names.begin(), names.end(), "UTF8_STRING") != names.end();
  for (const char* target : {"UTF8_STRING", "text/plain;charset=utf-8", "STRING"}) {
    ClipboardTarget found;
    const Answer answer = convert(target, limits, found);
    if (answer == Answer::given && found.format == 8) {
      std::string bytes(reinterpret_cast<const char*>(found.bytes.data()), found.bytes.size());
      text = found.propertyType == "STRING" ? utf8FromLatin1(bytes) : std::move(bytes);
      return Answer::given;
    }
    if (answer == Answer::overBudget || answer == Answer::ownerChanged) return answer;
    if (answer == Answer::refused && offersUtf8) return Answer::refused;
  }
  return Answer::given;
}

ClipboardReader::Answer ClipboardReader::readToEnd(int descriptor, Limits& limits, Bytes& answer,
                                                   const std::function<bool(Clock::time_point)>& wait) {
  constexpr std::size_t kPiece = std::size_t{64} * 1024;
  std::vector<std::byte> bytes;
  std::vector<std::byte> piece(kPiece);
  Clock::time_point deadline = limits.nextDeadline();
  while (Clock::now() < deadline) {
    const ssize_t count = read(descriptor, piece.data(), piece.size());
    if (count == 0) {
      answer = Bytes(std::move(bytes));
      return Answer::given;
    }
    if (count > 0) {
      const auto size = static_cast<std::size_t>(count);
      if (size > limits.bytesLeft) return Answer::overBudget;
      limits.bytesLeft -= size;
      bytes.insert(bytes.end(), piece.begin(), piece.begin() + count);
      deadline = limits.nextDeadline();
      continue;
    }
    if (errno != EAGAIN && errno != EINTR) return Answer::refused;
    if (!wait(deadline)) return Answer::ownerChanged;
  }
  return Answer::overBudget;
}

}  // namespace lexwend::platform
