// SPDX-License-Identifier: MIT
#include "platform/date_formatter.h"

#import <Foundation/Foundation.h>

#include <map>
#include <mutex>

#include "platform/mac/cf_text.h"
#include "platform/mac/mac_services.h"

namespace lexwend::platform::mac {
namespace {

/// Neither locale nor time zone is set: the user's own apply.
class MacDateFormatter : public DateFormatter {
 public:
  explicit MacDateFormatter(std::string_view pattern) {
    formatter_.dateFormat = (__bridge NSString*)cfTextOrEmpty(pattern).get();
  }
  std::string stringFromNow() override {
    return utf8((__bridge CFStringRef)[formatter_ stringFromDate:[NSDate date]]);
  }

 private:
  NSDateFormatter* formatter_ = [[NSDateFormatter alloc] init];
};

class MacDateFormatters : public DateFormatters {
 public:
  DateFormatter& withPattern(std::string_view pattern) override {
    const std::lock_guard lock(mutex_);
    auto found = formatters_.find(pattern);
    if (found == formatters_.end()) {
      found = formatters_.emplace(pattern, std::make_unique<MacDateFormatter>(pattern)).first;
    }
    return *found->second;
  }

 private:
  std::mutex mutex_;
  std::map<std::string, std::unique_ptr<MacDateFormatter>, std::less<>> formatters_;
};

}  // namespace

std::unique_ptr<DateFormatters> makeDateFormatters() { return std::make_unique<MacDateFormatters>(); }

}  // namespace lexwend::platform::mac
