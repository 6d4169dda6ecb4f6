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

/// The value of a number that is stored as a real one.
inline DefaultsValue defaultsValueOf(double real) {
  constexpr double kInt64Limit = 9223372036854775808.0;  // 2 to the power of 63, exact as a double
  const bool isWhole = std::trunc(real) == real && real >= -kInt64Limit && real < kInt64Limit;
  return isWhole ? DefaultsValue(static_cast<std::int64_t>(real)) : DefaultsValue(real);
}

/// The application's own per-user key-value store, kept over runs. Any thread; a write is seen by the next
/// read, and a crash at any moment leaves either the old or the new value.
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
