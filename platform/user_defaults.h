// SPDX-License-Identifier: MIT
#pragma once

#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace lexwend::platform {

/// A stored object of a kind that is neither number, truth value nor text.
struct OtherDefaultsValue {
  bool operator==(const OtherDefaultsValue&) const = default;
};
/// Numbers are std::int64_t when whole and in range, else double.
using DefaultsValue = std::variant<bool, std::int64_t, double, std::string, OtherDefaultsValue>;

/// The value of a number that a store holds as a double.
inline DefaultsValue defaultsNumber(double number) {
  constexpr double kLimit = 9223372036854775808.0;  // 2^63, the first double past the range
  const bool isWhole = std::trunc(number) == number;
  if (isWhole && number >= -kLimit && number < kLimit) return static_cast<std::int64_t>(number);
  return number;
}

/// The application's own key-value store of this user, which outlasts the process. Any thread. The next read
/// sees a write. A crash at any moment leaves either the old or the new value. A write that the system
/// refuses is not reported; its value lasts until this process ends. A call blocks for as long as the disk
/// takes.
class UserDefaults {
 public:
  virtual ~UserDefaults() = default;
  virtual std::optional<DefaultsValue> objectForKey(std::string_view key) = 0;
  /// False when absent; a number counts as true when it is not zero.
  virtual bool boolForKey(std::string_view key) = 0;
  virtual void setInteger(std::int64_t value, std::string_view key) = 0;
  virtual void setBool(bool value, std::string_view key) = 0;
};

/// The standard user defaults of the installed host.
UserDefaults& standardUserDefaults();

}  // namespace lexwend::platform
