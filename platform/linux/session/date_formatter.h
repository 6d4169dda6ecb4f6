// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "platform/date_formatter.h"

namespace lexwend::platform {

/// ICU's formatters in the locale of the environment and the system's time zone, both as they were at first
/// use.
class LinuxDateFormatters : public DateFormatters {
 public:
  DateFormatter& withPattern(std::string_view pattern) override;

 private:
  std::mutex mutex_;
  std::map<std::string, std::unique_ptr<DateFormatter>, std::less<>> formatters_;
};

}  // namespace lexwend::platform
