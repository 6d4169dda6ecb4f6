// SPDX-License-Identifier: MIT
#include "platform/user_defaults.h"

#import <Foundation/Foundation.h>

#include "platform/mac/cf_text.h"
#include "platform/mac/mac_services.h"

namespace lexwend::platform::mac {
namespace {

DefaultsValue numberValue(CFNumberRef number) {
  std::int64_t whole = 0;
  // Succeeds exactly when nothing of the value is lost.
  if (!CFNumberIsFloatType(number) && CFNumberGetValue(number, kCFNumberSInt64Type, &whole)) return whole;
  return defaultsNumber([(__bridge NSNumber*)number doubleValue]);
}

/// A truth value and a number are both NSNumber; only their Core Foundation types tell them apart.
DefaultsValue defaultsValue(CFTypeRef object) {
  const CFTypeID type = CFGetTypeID(object);
  if (type == CFBooleanGetTypeID()) return CFBooleanGetValue(static_cast<CFBooleanRef>(object)) != 0;
  if (type == CFNumberGetTypeID()) return numberValue(static_cast<CFNumberRef>(object));
  if (type == CFStringGetTypeID()) return utf8(static_cast<CFStringRef>(object));
  return OtherDefaultsValue{};
}

class MacUserDefaults : public UserDefaults {
 public:
  std::optional<DefaultsValue> objectForKey(std::string_view key) override {
    id object = [defaults_ objectForKey:(__bridge NSString*)cfTextOrEmpty(key).get()];
    if (object == nil) return std::nullopt;
    return defaultsValue((__bridge CFTypeRef)object);
  }
  bool boolForKey(std::string_view key) override {
    return [defaults_ boolForKey:(__bridge NSString*)cfTextOrEmpty(key).get()];
  }
  void setInteger(std::int64_t value, std::string_view key) override {
    [defaults_ setInteger:value forKey:(__bridge NSString*)cfTextOrEmpty(key).get()];
  }
  void setBool(bool value, std::string_view key) override {
    [defaults_ setBool:value forKey:(__bridge NSString*)cfTextOrEmpty(key).get()];
  }

 private:
  NSUserDefaults* defaults_ = [NSUserDefaults standardUserDefaults];
};

}  // namespace

std::unique_ptr<UserDefaults> makeStandardUserDefaults() { return std::make_unique<MacUserDefaults>(); }

}  // namespace lexwend::platform::mac
