// SPDX-License-Identifier: MIT
#include "platform/alerts.h"

#import <AppKit/AppKit.h>

#include "platform/mac/cf_text.h"
#include "platform/mac/mac_services.h"

namespace lexwend::platform::mac {
namespace {

class MacAlerts : public Alerts {
 public:
  int runModal(const Alert& alert) override {
    NSAlert* window = [[NSAlert alloc] init];
    window.messageText = (__bridge NSString*)cfTextOrEmpty(alert.messageText).get();
    window.informativeText = (__bridge NSString*)cfTextOrEmpty(alert.informativeText).get();
    for (const std::string& title : alert.buttons) {
      [window addButtonWithTitle:(__bridge NSString*)cfTextOrEmpty(title).get()];
    }
    return static_cast<int>([window runModal]);
  }
};

static_assert(kAlertFirstButtonReturn == NSAlertFirstButtonReturn);

}  // namespace

std::unique_ptr<Alerts> makeAlerts() { return std::make_unique<MacAlerts>(); }

}  // namespace lexwend::platform::mac
