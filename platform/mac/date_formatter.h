// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "platform/date_formatter.h"

namespace lexwend::platform::mac {

/// Makes an NSDateFormatter for each pattern and keeps it. Neither locale nor time zone is set: the user's
/// own apply. Any thread.
class MacDateFormatters : public DateFormatters {
 public:
  DateFormatter& withPattern(std::string_view pattern) override;

 private:
  std::mutex mutex_;
  std::map<std::string, std::unique_ptr<DateFormatter>, std::less<>> formatters_;
};

}  // namespace lexwend::platform::mac
