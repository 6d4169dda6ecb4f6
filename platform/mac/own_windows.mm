// SPDX-License-Identifier: MIT
#include "platform/mac/own_windows.h"

#import <AppKit/AppKit.h>

namespace lexwend::platform::mac {
namespace {

struct OwnWindows {
  int shown = 0;
  bool isKeyboardDue = false;  ///< it is to go back when no window is shown
};
OwnWindows& ownWindows() {
  static OwnWindows windows;
  return windows;
}

void giveKeyboardBack() {
  if (ownWindows().shown > 0 || !ownWindows().isKeyboardDue) return;
  // An application that is not active has no keyboard to give back.
  if ([NSApp isActive]) [NSApp hide:nil];
}

}  // namespace

ShownWindow::ShownWindow() {
  ++ownWindows().shown;
  // A hidden application shows no window.
  [NSApp unhideWithoutActivation];
}

ShownWindow::~ShownWindow() {
  --ownWindows().shown;
  ownWindows().isKeyboardDue = true;
  // In the default mode alone: not while an alert or the menu is open.
  CFRunLoopPerformBlock(CFRunLoopGetMain(), kCFRunLoopDefaultMode, ^{
    giveKeyboardBack();
  });
  CFRunLoopWakeUp(CFRunLoopGetMain());
}

void leaveKeyboardToOthers() { ownWindows().isKeyboardDue = false; }

}  // namespace lexwend::platform::mac
