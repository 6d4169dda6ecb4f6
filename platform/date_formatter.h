// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace lexwend::platform {

/// Renders the time in the user's current locale and time zone. Any thread. Does not block.
class DateFormatter {
 public:
  virtual ~DateFormatter() = default;
  /// The current date and time in the formatter's pattern, in UTF-8. Empty when the system cannot read the
  /// pattern.
  virtual std::string stringFromNow() = 0;
};

/// Makes and keeps formatters. Any thread. Does not block.
class DateFormatters {
 public:
  virtual ~DateFormatters() = default;
  /// The formatter of a Unicode date pattern (UTS #35). It is made on first use and lives as long as the
  /// host. The same pattern gives the same formatter.
  virtual DateFormatter& withPattern(std::string_view pattern) = 0;
};

/// The service of the installed host.
DateFormatters& dateFormatters();

}  // namespace lexwend::platform
