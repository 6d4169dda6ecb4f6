// SPDX-License-Identifier: MIT
#include "platform/mac/alerts.h"

#import <AppKit/AppKit.h>

#include "platform/mac/cf_text.h"
#include "platform/mac/own_windows.h"

namespace lexwend::platform::mac {
namespace {

NSString* const kEscape = @"\033";

}  // namespace

int MacAlerts::runModal(const Alert& alert) {
  const ShownWindow shown;
  NSAlert* window = [[NSAlert alloc] init];
  window.messageText = (__bridge NSString*)cfTextOrEmpty(alert.messageText).get();
  window.informativeText = (__bridge NSString*)cfTextOrEmpty(alert.informativeText).get();
  for (const std::string& title : alert.buttons) {
    [window addButtonWithTitle:(__bridge NSString*)cfTextOrEmpty(title).get()];
  }
  // The system gives Escape by itself only to a button that is called Cancel.
  if (alert.buttons.size() > 1) [window.buttons lastObject].keyEquivalent = kEscape;
  // The system may refuse to bring the agent to the front (macOS 14 and later). The alert is seen all the
  // same, and a click into it makes the agent active.
  [window layout];
  [window.window orderFrontRegardless];
  return static_cast<int>([window runModal]);
}

static_assert(kAlertFirstButtonReturn == NSAlertFirstButtonReturn);

}  // namespace lexwend::platform::mac
