// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/fake/fake_system.h"
#include "platform/user_defaults.h"

namespace lexwend::platform {

/// A key-value store in memory, empty at the start.
class FakeUserDefaults : public UserDefaults {
 public:
  explicit FakeUserDefaults(FakeSystem& system) : system_(system) {}

  std::optional<DefaultsValue> objectForKey(std::string_view key) override {
    const auto found = values_.find(key);
    auto value = found == values_.end() ? std::nullopt : std::optional(found->second);
    if (auto waiting = afterRead_.extract(std::string(key))) waiting.mapped()();
    return value;
  }
  bool boolForKey(std::string_view key) override {
    const auto found = values_.find(key);
    if (found == values_.end()) return false;
    if (const auto* truth = std::get_if<bool>(&found->second)) return *truth;
    if (const auto* whole = std::get_if<std::int64_t>(&found->second)) return *whole != 0;
    if (const auto* number = std::get_if<double>(&found->second)) return *number != 0.0;
    return false;
  }
  void setInteger(std::int64_t value, std::string_view key) override {
    system_.called("userDefaults.setInteger " + std::string(key) + " " + std::to_string(value));
    put(key, value);
  }
  void setBool(bool value, std::string_view key) override {
    system_.called("userDefaults.setBool " + std::string(key) + (value ? " true" : " false"));
    put(key, value);
  }

  // Controls of a test.
  void put(std::string_view key, DefaultsValue value) {
    if (const auto* number = std::get_if<double>(&value)) value = defaultsNumber(*number);
    values_.insert_or_assign(std::string(key), std::move(value));
  }
  void remove(std::string_view key) {
    const auto found = values_.find(key);
    if (found != values_.end()) values_.erase(found);
  }
  /// Runs once, right after the next objectForKey() of that key. A read that never happens is a complaint.
  void afterNextRead(std::string_view key, std::function<void()> what) {
    afterRead_.insert_or_assign(std::string(key), std::move(what));
  }
  const std::map<std::string, DefaultsValue, std::less<>>& all() const { return values_; }
  std::vector<std::string> unused() const {
    std::vector<std::string> complaints;
    for (const auto& [key, what] : afterRead_) {
      complaints.push_back("the read of the setting " + key + " that was waited for never came");
    }
    return complaints;
  }

 private:
  FakeSystem& system_;
  std::map<std::string, DefaultsValue, std::less<>> values_;
  std::map<std::string, std::function<void()>> afterRead_;
};

}  // namespace lexwend::platform
