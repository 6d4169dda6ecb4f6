// SPDX-License-Identifier: MIT
#include "platform/linux/session/date_formatter.h"

#include <unicode/calendar.h>
#include <unicode/smpdtfmt.h>
#include <unicode/unistr.h>

namespace lexwend::platform {
namespace {

class IcuDateFormatter : public DateFormatter {
 public:
  explicit IcuDateFormatter(std::string_view pattern) {
    auto status = U_ZERO_ERROR;
    const auto text =
        icu::UnicodeString::fromUTF8({pattern.data(), static_cast<std::int32_t>(pattern.size())});
    auto format = std::make_unique<icu::SimpleDateFormat>(text, icu::Locale::getDefault(), status);
    if (U_SUCCESS(status)) format_ = std::move(format);
  }

  std::string stringFromNow() override {
    const std::lock_guard lock(mutex_);  // an ICU formatter serves one thread at a time
    std::string result;
    if (format_ != nullptr) {
      icu::UnicodeString text;
      format_->format(icu::Calendar::getNow(), text).toUTF8String(result);
    }
    return result;
  }

 private:
  std::mutex mutex_;
  std::unique_ptr<icu::SimpleDateFormat> format_;
};

}  // namespace

DateFormatter& LinuxDateFormatters::withPattern(std::string_view pattern) {
  const std::lock_guard lock(mutex_);
  auto entry = formatters_.find(pattern);
  if (entry == formatters_.end()) {
    entry = formatters_.emplace(pattern, std::make_unique<IcuDateFormatter>(pattern)).first;
  }
  return *entry->second;
}

}  // namespace lexwend::platform
