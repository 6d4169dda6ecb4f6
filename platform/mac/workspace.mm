// SPDX-License-Identifier: MIT
#include "platform/workspace.h"

#import <AppKit/AppKit.h>

#include <utility>

#include "platform/mac/callback.h"
#include "platform/mac/cf_text.h"
#include "platform/mac/mac_services.h"
#include "platform/mac/own_windows.h"

namespace lexwend::platform::mac {
namespace {

class MacUrl : public Url {
 public:
  explicit MacUrl(NSURL* url) : url_(url) {}
  NSURL* get() const { return url_; }

 private:
  NSURL* url_;
};

class MacWorkspace : public Workspace {
 public:
  std::optional<FrontApplication> frontmostApplication() override {
    NSRunningApplication* front = [[NSWorkspace sharedWorkspace] frontmostApplication];
    if (front == nil) return std::nullopt;
    NSString* identifier = front.bundleIdentifier;
    if (identifier == nil) return FrontApplication{};
    return FrontApplication{.bundleIdentifier = utf8((__bridge CFStringRef)identifier)};
  }

  UrlRef urlFromString(std::string_view text) override {
    const CFRef<CFStringRef> string = cfText(text);
    if (!string) return nullptr;
    NSURL* url = [NSURL URLWithString:(__bridge NSString*)string.get()];
    if (url == nil) return nullptr;
    return std::make_shared<MacUrl>(url);
  }

  void open(const UrlRef& url) override {
    leaveKeyboardToOthers();
    [[NSWorkspace sharedWorkspace] openURL:static_cast<const MacUrl&>(*url).get()];
  }

  void observeDidWake(std::function<void()> handler) override {
    const auto kept = shared(std::move(handler));
    // Sleep and wake are posted to the workspace's own centre, not to the default one.
    NSNotificationCenter* center = [[NSWorkspace sharedWorkspace] notificationCenter];
    [center addObserverForName:NSWorkspaceDidWakeNotification
                        object:nil
                         queue:[NSOperationQueue mainQueue]
                    usingBlock:^(NSNotification*) {
                      guarded(*kept);
                    }];
  }
};

}  // namespace

std::unique_ptr<Workspace> makeWorkspace() { return std::make_unique<MacWorkspace>(); }

}  // namespace lexwend::platform::mac
