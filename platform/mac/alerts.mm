// SPDX-License-Identifier: MIT
#include "platform/alerts.h"

#import <AppKit/AppKit.h>

#include "platform/mac/cf_text.h"
#include "platform/mac/mac_services.h"
#include "platform/mac/own_windows.h"

namespace lexwend::platform::mac {
namespace {

NSString* const kEscape = @"\033";

class MacAlerts : public Alerts {
 public:
  int runModal(const Alert& alert) override {
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
};

static_assert(kAlertFirstButtonReturn == NSAlertFirstButtonReturn);

}  // namespace

std::unique_ptr<Alerts> makeAlerts() { return std::make_unique<MacAlerts>(); }

}  // namespace lexwend::platform::mac
