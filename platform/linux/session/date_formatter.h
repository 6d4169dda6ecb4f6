// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "platform/date_formatter.h"

namespace lexwend::platform {

/// ICU's formatters. They use the locale of the environment and the system's time zone as these were at first
/// use. Any thread; a call waits only for another thread's call of the same formatter.
class LinuxDateFormatters : public DateFormatters {
 public:
  DateFormatter& withPattern(std::string_view pattern) override;

 private:
  std::mutex mutex_;
  std::map<std::string, std::unique_ptr<DateFormatter>, std::less<>> formatters_;
};

}  // namespace lexwend::platform
