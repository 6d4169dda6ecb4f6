// SPDX-License-Identifier: MIT
#include "platform/fake/fake_date_formatter.h"

#include <utility>

namespace lexwend::platform {
namespace {

class FakeDateFormatter : public DateFormatter {
 public:
  FakeDateFormatter(FakeDateFormatters& owner, std::string_view pattern) : owner_(owner), pattern_(pattern) {}
  std::string stringFromNow() override { return owner_.render(pattern_); }

 private:
  FakeDateFormatters& owner_;
  std::string pattern_;
};

std::string padded(long value, std::size_t width) {
  std::string digits = std::to_string(value);
  if (digits.size() < width) digits.insert(0, width - digits.size(), '0');
  return digits;
}

bool isLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

}  // namespace

DateFormatter& FakeDateFormatters::withPattern(std::string_view pattern) {
  auto found = formatters_.find(pattern);
  if (found == formatters_.end()) {
    found =
        formatters_
            .emplace(std::string(pattern), std::make_unique<FakeDateFormatter>(*this, std::string(pattern)))
            .first;
  }
  return *found->second;
}

void FakeDateFormatters::setLocalTime(std::chrono::sys_time<std::chrono::milliseconds> now) {
  start_ = now - std::chrono::duration_cast<std::chrono::milliseconds>(system_.clock.now());
}

std::chrono::sys_time<std::chrono::milliseconds> FakeDateFormatters::localTime() const {
  return start_ + std::chrono::duration_cast<std::chrono::milliseconds>(system_.clock.now());
}

std::string FakeDateFormatters::render(std::string_view pattern) const {
  const auto now = localTime();
  const auto day = std::chrono::floor<std::chrono::days>(now);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss time(now - day);
  std::string text;
  for (std::size_t i = 0; i < pattern.size();) {
    const char letter = pattern[i];
    std::size_t width = 1;
    while (i + width < pattern.size() && pattern[i + width] == letter) ++width;
    if (!isLetter(letter)) {
      text.append(width, letter);
      i += width;
      continue;
    }
    i += width;
    switch (letter) {
      case 'y':
        text += padded(static_cast<int>(date.year()), width);
        break;
      case 'M':
        text += padded(static_cast<long>(static_cast<unsigned>(date.month())), width);
        break;
      case 'd':
        text += padded(static_cast<long>(static_cast<unsigned>(date.day())), width);
        break;
      case 'H':
        text += padded(time.hours().count(), width);
        break;
      case 'm':
        text += padded(time.minutes().count(), width);
        break;
      case 's':
        text += padded(static_cast<long>(time.seconds().count()), width);
        break;
      case 'S':
        // Fractions of a second: the first `width` digits.
        text += padded(static_cast<long>(time.subseconds().count()), 3).append(width, '0').substr(0, width);
        break;
      default:
        system_.complain(std::string("the date pattern letter '") + letter + "' is not known to this host");
        break;
    }
  }
  return text;
}

}  // namespace lexwend::platform
