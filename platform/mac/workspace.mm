// SPDX-License-Identifier: MIT
#include "platform/mac/workspace.h"

#import <AppKit/AppKit.h>

#include <utility>

#include "platform/mac/callback.h"
#include "platform/mac/cf_text.h"
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

}  // namespace

std::optional<FrontApplication> MacWorkspace::frontmostApplication() {
  NSRunningApplication* front = [[NSWorkspace sharedWorkspace] frontmostApplication];
  if (front == nil) return std::nullopt;
  NSString* identifier = front.bundleIdentifier;
  if (identifier == nil) return FrontApplication{};
  return FrontApplication{.bundleIdentifier = utf8((__bridge CFStringRef)identifier)};
}

UrlRef MacWorkspace::urlFromString(std::string_view text) {
  const CFRef<CFStringRef> string = cfText(text);
  if (!string) return nullptr;
  NSURL* url = [NSURL URLWithString:(__bridge NSString*)string.get()];
  if (url == nil) return nullptr;
  return std::make_shared<MacUrl>(url);
}

void MacWorkspace::open(const UrlRef& url) {
  leaveKeyboardToOthers();
  [[NSWorkspace sharedWorkspace] openURL:static_cast<const MacUrl&>(*url).get()];
}

Registration MacWorkspace::observeDidWake(std::function<void()> handler) {
  auto kept = shared(std::move(handler));
  const std::weak_ptr observer = kept;
  // Sleep and wake are posted to the workspace's own centre, not to the default one.
  NSNotificationCenter* center = [[NSWorkspace sharedWorkspace] notificationCenter];
  [center addObserverForName:NSWorkspaceDidWakeNotification
                      object:nil
                       queue:[NSOperationQueue mainQueue]
                  usingBlock:^(NSNotification*) {
                    if (const auto running = observer.lock()) guarded(*running);
                  }];
  // The system keeps its observer, which does nothing once the handler has gone.
  return Registration([kept = std::move(kept)] {});
}

}  // namespace lexwend::platform::mac
