// SPDX-License-Identifier: MIT
#include "platform/mac/date_formatter.h"

#import <Foundation/Foundation.h>

#include "platform/mac/cf_text.h"

namespace lexwend::platform::mac {
namespace {

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

}  // namespace

DateFormatter& MacDateFormatters::withPattern(std::string_view pattern) {
  const std::lock_guard lock(mutex_);
  auto found = formatters_.find(pattern);
  if (found == formatters_.end()) {
    found = formatters_.emplace(pattern, std::make_unique<MacDateFormatter>(pattern)).first;
  }
  return *found->second;
}

}  // namespace lexwend::platform::mac
