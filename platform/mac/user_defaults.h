// SPDX-License-Identifier: MIT
#pragma once

#include "platform/user_defaults.h"

namespace lexwend::platform::mac {

/// The standard NSUserDefaults of this process. Any thread.
class MacUserDefaults : public UserDefaults {
 public:
  std::optional<DefaultsValue> objectForKey(std::string_view key) override;
  bool boolForKey(std::string_view key) override;
  void setInteger(std::int64_t value, std::string_view key) override;
  void setBool(bool value, std::string_view key) override;
};

}  // namespace lexwend::platform::mac
