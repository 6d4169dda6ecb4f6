// SPDX-License-Identifier: MIT
// What the files of the user-interface doubles know of each other.
#pragma once

#include "tests/mac/doubles/support.h"

@interface NSImage () {
 @public
  std::string symbol_;
  NSString* description_;
  BOOL isTemplate_;
}
@end

@interface NSView () {
 @public
  NSRect frame_;
  NSMutableArray* subviews_;
  NSView* superview_;
  NSWindow* window_;
  CALayer* layer_;
  BOOL wantsLayer_;
  BOOL knowsAppearance_;
}
@end

namespace lexwend::doubles {
windows::Control controlOf(NSView* view);
void appearanceChanged();
Rect rectOf(NSRect rect);
/// What a weak reference refers to, without keeping it.
id unowned(__weak id* reference);
/// Sends a control's or an item's action as a click of the user does; a missing target ends in nothing.
void sendAction(SEL action, id target, id sender);
}  // namespace lexwend::doubles
