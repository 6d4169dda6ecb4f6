// SPDX-License-Identifier: MIT
// What the doubles share. They are written with manual reference counting, so that they do not depend on what
// the host is tested for.
#pragma once
#import <AppKit/AppKit.h>

#include <string>
#include <string_view>

#include "tests/mac/doubles/control.h"

namespace lexwend::doubles {

/// "macOS: " and the message on standard error, then the end of the process.
[[noreturn]] void die(const std::string& message);

// What each double begins with. The name is that of the double itself, "-[Class selector:]" or the function.
void record(const std::string& arguments = {}, const char* name = __builtin_FUNCTION());
void requireMainThread(const char* what = __builtin_FUNCTION());
/// Both.
void called(const std::string& arguments = {}, const char* name = __builtin_FUNCTION());
/// User interface exists only on the main thread and after the shared application was made.
void requireApplication(const char* what = __builtin_FUNCTION());
void requireNonnull(const void* value, const char* what = __builtin_FUNCTION());
/// The object must be of that class.
void requireKind(CFTypeRef object, Class cls, const char* what = __builtin_FUNCTION());

std::string utf8(NSString* string);       ///< "" for nil; ill-formed units become U+FFFD
NSString* string(std::string_view text);  ///< autoreleased
const std::u16string unitsOf(NSString* string);
NSString* stringOfUnits(std::u16string units);
std::string describe(id object);  ///< for the call log
std::string truth(bool value);
std::string decimal(double value);

id objectOf(const Value& value);  ///< autoreleased; nil for nothing
Value valueOf(id object);
NSData* dataOf(const Bytes& bytes);
Bytes bytesOfData(NSData* data);

/// Puts a function into the list of those that start a session afresh; called by static initialisers.
struct ResetHook {
  explicit ResetHook(void (*reset)());
};

/// Puts a function into the list of those that run when the process ends and the login session goes on.
struct ProcessEndHook {
  explicit ProcessEndHook(void (*end)());
};

/// Uses up a failure that a test prepared for this call: its code, or nothing when the call goes well.
std::optional<std::int32_t> takeFailure(const std::string& call = __builtin_FUNCTION());

/// Makes the object a part of the process that is never released and not counted.
id keptForever(id object);

bool isReadOnly(const std::string& path);  ///< as a test said
void runMainQueueAndTimersDue();
void postTo(NSNotificationCenter* center, NSString* name);

bool isApplicationActive();
/// A click of the user into a window of the application, or its activation.
void activateApplication();
/// Distributed notifications that were held back while the application was not active.
void deliverHeldNotifications();
/// Presses that waited for the agent's own menu to close, or for the main thread.
void deliverQueuedPresses();
bool isMenuOpen();
/// Its next turn comes at once, not with whatever happens next.
void wakeRunLoop();
bool isMainThreadBlocked();
bool isDark();
double secondsSinceStartup();

extern "C" {
signed char lexwend_isMainThread(void);
}

}  // namespace lexwend::doubles
