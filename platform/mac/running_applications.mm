// SPDX-License-Identifier: MIT
#include "platform/mac/running_applications.h"

#import <AppKit/AppKit.h>

#include "platform/mac/cf_text.h"

namespace lexwend::platform::mac {
std::vector<ProcessIdentifier> MacRunningApplications::withBundleIdentifier(std::string_view identifier) {
  NSString* bundle = (__bridge NSString*)cfTextOrEmpty(identifier).get();
  std::vector<ProcessIdentifier> processes;
  for (NSRunningApplication* application in
       [NSRunningApplication runningApplicationsWithBundleIdentifier:bundle]) {
    processes.push_back(application.processIdentifier);
  }
  return processes;
}

ProcessIdentifier MacRunningApplications::ownProcessIdentifier() {
  return [[NSProcessInfo processInfo] processIdentifier];
}

}  // namespace lexwend::platform::mac
