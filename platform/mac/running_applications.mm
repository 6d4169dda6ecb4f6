// SPDX-License-Identifier: MIT
#include "platform/running_applications.h"

#import <AppKit/AppKit.h>

#include "platform/mac/cf_text.h"
#include "platform/mac/mac_services.h"

namespace lexwend::platform::mac {
namespace {

class MacRunningApplications : public RunningApplications {
 public:
  std::vector<ProcessIdentifier> withBundleIdentifier(std::string_view identifier) override {
    NSString* bundle = (__bridge NSString*)cfTextOrEmpty(identifier).get();
    std::vector<ProcessIdentifier> processes;
    for (NSRunningApplication* application in
         [NSRunningApplication runningApplicationsWithBundleIdentifier:bundle]) {
      processes.push_back(application.processIdentifier);
    }
    return processes;
  }

  ProcessIdentifier ownProcessIdentifier() override {
    return [[NSProcessInfo processInfo] processIdentifier];
  }
};

}  // namespace

std::unique_ptr<RunningApplications> makeRunningApplications() {
  return std::make_unique<MacRunningApplications>();
}

}  // namespace lexwend::platform::mac
