// SPDX-License-Identifier: MIT
#include "platform/mac/application.h"

#import <AppKit/AppKit.h>

#include <utility>

#include "platform/mac/callback.h"
#include "platform/mac/cf_text.h"

@interface LXWApplicationDelegate : NSObject <NSApplicationDelegate> {
 @public
  std::function<void()> didFinishLaunching;
}
@end

@implementation LXWApplicationDelegate

- (void)applicationDidFinishLaunching:(NSNotification*)notification {
  lexwend::platform::mac::guarded(didFinishLaunching);
}

/// Nothing is restored; who does not say so is warned about in the system's log at every start.
- (BOOL)applicationSupportsSecureRestorableState:(NSApplication*)application {
  return YES;
}

@end

namespace lexwend::platform::mac {
namespace {

/// The name when the executable runs outside of its bundle.
constexpr const char* kNameWithoutBundle = "Lexwend";

std::optional<std::string> infoString(NSString* key) {
  id value = [[[NSBundle mainBundle] infoDictionary] objectForKey:key];
  if (![value isKindOfClass:[NSString class]]) return std::nullopt;
  return utf8((__bridge CFStringRef)value);
}

}  // namespace

std::optional<std::string> MacApplication::bundleIdentifier() {
  NSString* identifier = [[NSBundle mainBundle] bundleIdentifier];
  if (identifier == nil) return std::nullopt;
  return utf8((__bridge CFStringRef)identifier);
}

std::string MacApplication::displayName() {
  return infoString(@"CFBundleDisplayName").value_or(kNameWithoutBundle);
}

std::optional<std::string> MacApplication::shortVersionString() {
  return infoString(@"CFBundleShortVersionString");
}

std::optional<std::string> MacApplication::takeSharedApplication() {
  [NSApplication sharedApplication];
  return std::nullopt;
}

std::optional<std::string> MacApplication::notice() { return std::nullopt; }

void MacApplication::setDelegate(std::function<void()> didFinishLaunching) {
  LXWApplicationDelegate* delegate = [[LXWApplicationDelegate alloc] init];
  delegate->didFinishLaunching = std::move(didFinishLaunching);
  [NSApp setDelegate:delegate];
  delegate_ = {(__bridge_retained CFTypeRef)delegate, CFRelease};
}

void MacApplication::setActivationPolicy(ActivationPolicy policy) {
  [NSApp setActivationPolicy:static_cast<NSApplicationActivationPolicy>(policy)];
}

void MacApplication::run() {
  @autoreleasepool {
    [NSApp run];
  }
}

void MacApplication::terminate() { [NSApp terminate:nil]; }

void MacApplication::activate(bool ignoringOtherApps) { [NSApp activateIgnoringOtherApps:ignoringOtherApps]; }

void MacApplication::beep() { NSBeep(); }

static_assert(static_cast<int>(ActivationPolicy::regular) == NSApplicationActivationPolicyRegular);
static_assert(static_cast<int>(ActivationPolicy::accessory) == NSApplicationActivationPolicyAccessory);

}  // namespace lexwend::platform::mac
