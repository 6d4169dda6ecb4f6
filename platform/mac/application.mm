// SPDX-License-Identifier: MIT
#include "platform/application.h"

#import <AppKit/AppKit.h>

#include <utility>

#include "platform/mac/callback.h"
#include "platform/mac/cf_text.h"
#include "platform/mac/mac_services.h"

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

class MacApplication : public Application {
 public:
  std::optional<std::string> bundleIdentifier() override {
    NSString* identifier = [[NSBundle mainBundle] bundleIdentifier];
    if (identifier == nil) return std::nullopt;
    return utf8((__bridge CFStringRef)identifier);
  }
  std::string displayName() override {
    return infoString(@"CFBundleDisplayName").value_or(kNameWithoutBundle);
  }
  std::optional<std::string> shortVersionString() override {
    return infoString(@"CFBundleShortVersionString");
  }

  std::optional<std::string> takeSharedApplication() override {
    application_ = [NSApplication sharedApplication];
    return std::nullopt;
  }
  std::optional<std::string> notice() override { return std::nullopt; }
  void setDelegate(std::function<void()> didFinishLaunching) override {
    delegate_ = [[LXWApplicationDelegate alloc] init];
    delegate_->didFinishLaunching = std::move(didFinishLaunching);
    application_.delegate = delegate_;
  }
  void setActivationPolicy(ActivationPolicy policy) override {
    [application_ setActivationPolicy:static_cast<NSApplicationActivationPolicy>(policy)];
  }
  void run() override {
    @autoreleasepool {
      [application_ run];
    }
  }
  void terminate() override { [application_ terminate:nil]; }

  void activate(bool ignoringOtherApps) override {
    [application_ activateIgnoringOtherApps:ignoringOtherApps];
  }
  void beep() override { NSBeep(); }

 private:
  NSApplication* application_ = nil;
  LXWApplicationDelegate* delegate_ = nil;  ///< the application holds it weakly
};

static_assert(static_cast<int>(ActivationPolicy::regular) == NSApplicationActivationPolicyRegular);
static_assert(static_cast<int>(ActivationPolicy::accessory) == NSApplicationActivationPolicyAccessory);

}  // namespace

std::unique_ptr<Application> makeApplication() { return std::make_unique<MacApplication>(); }

}  // namespace lexwend::platform::mac
