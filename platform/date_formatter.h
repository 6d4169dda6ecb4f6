// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace lexwend::platform {

/// Renders moments in the user's current locale and time zone. Any thread.
class DateFormatter {
 public:
  virtual ~DateFormatter() = default;
  /// The current date and time by the formatter's pattern; UTF-8.
  virtual std::string stringFromNow() = 0;
};

/// Any thread.
class DateFormatters {
 public:
  virtual ~DateFormatters() = default;
  /// The formatter of a Unicode date pattern (UTS #35). Made on first use and kept: the same pattern gives
  /// the same formatter. One that the system cannot read renders as an empty text.
  virtual DateFormatter& withPattern(std::string_view pattern) = 0;
};

/// The service of the installed host.
DateFormatters& dateFormatters();

}  // namespace lexwend::platform
