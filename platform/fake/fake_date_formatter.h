// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "platform/date_formatter.h"
#include "platform/fake/fake_system.h"

namespace lexwend::platform {

/// Renders a local time, which the test sets and the manual clock moves. Knows the pattern letters y M d H m
/// s S. Any other letter is a complaint.
class FakeDateFormatters : public DateFormatters {
 public:
  explicit FakeDateFormatters(FakeSystem& system) : system_(system) {}

  DateFormatter& withPattern(std::string_view pattern) override;

  // Controls of a test.
  /// Sets the local time now. A new host starts at 2024-03-05 14:07:09.042.
  void setLocalTime(std::chrono::sys_time<std::chrono::milliseconds> now);
  std::chrono::sys_time<std::chrono::milliseconds> localTime() const;
  std::string render(std::string_view pattern) const;
  std::size_t made() const { return formatters_.size(); }

 private:
  FakeSystem& system_;
  std::chrono::sys_time<std::chrono::milliseconds> start_ =
      std::chrono::sys_days(std::chrono::year(2024) / 3 / 5) + std::chrono::hours(14) +
      std::chrono::minutes(7) + std::chrono::seconds(9) + std::chrono::milliseconds(42);
  std::map<std::string, std::unique_ptr<DateFormatter>, std::less<>> formatters_;
};

}  // namespace lexwend::platform
