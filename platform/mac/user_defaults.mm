// SPDX-License-Identifier: MIT
#include "platform/mac/user_defaults.h"

#import <Foundation/Foundation.h>

#include "platform/mac/cf_text.h"

namespace lexwend::platform::mac {
namespace {

NSUserDefaults* defaults() { return [NSUserDefaults standardUserDefaults]; }

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

}  // namespace

std::optional<DefaultsValue> MacUserDefaults::objectForKey(std::string_view key) {
  id object = [defaults() objectForKey:(__bridge NSString*)cfTextOrEmpty(key).get()];
  if (object == nil) return std::nullopt;
  return defaultsValue((__bridge CFTypeRef)object);
}

bool MacUserDefaults::boolForKey(std::string_view key) {
  return [defaults() boolForKey:(__bridge NSString*)cfTextOrEmpty(key).get()];
}

void MacUserDefaults::setInteger(std::int64_t value, std::string_view key) {
  [defaults() setInteger:value forKey:(__bridge NSString*)cfTextOrEmpty(key).get()];
}

void MacUserDefaults::setBool(bool value, std::string_view key) {
  [defaults() setBool:value forKey:(__bridge NSString*)cfTextOrEmpty(key).get()];
}

}  // namespace lexwend::platform::mac
