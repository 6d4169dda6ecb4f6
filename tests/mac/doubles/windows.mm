// SPDX-License-Identifier: MIT
// Windows, their controllers, alerts, key events and local monitors.
#include <algorithm>

#include "tests/mac/doubles/user_interface.h"
#include "tests/mac/runtime/runtime.h"

using namespace lexwend;
using namespace lexwend::doubles;

/// The token of a local monitor.
@interface LXWKeyMonitor : NSObject {
 @public
  NSEvent* (^block)(NSEvent*);
  NSEventMask mask;
}
@end
@implementation LXWKeyMonitor
- (void)dealloc {
  [(id)block release];
  [super dealloc];
}
@end

namespace {
void lastWindowMayHaveClosed();
constexpr long kEscape = -1, kReturn = -2;
struct State {
  std::vector<NSWindow*> windows;  // not retained
  NSWindow* key = nil;
  std::vector<LXWKeyMonitor*> monitors;
  std::vector<std::pair<long, std::chrono::microseconds>> alertAnswers;  // kEscape, kReturn: by that key
  std::vector<alerts::Alert> alertsShown;
  std::function<long(const alerts::Alert&)> alertAnswer;
};
State& state() {
  static auto* the = new State;
  return *the;
}
void dropMonitors() {
  for (LXWKeyMonitor* monitor : state().monitors) [monitor release];
  state().monitors.clear();
}
const ProcessEndHook kProcessEnd([] { dropMonitors(); });
const ResetHook kReset([] {
  dropMonitors();
  state().alertAnswer = nullptr;
  state().alertAnswers.clear();
  state().alertsShown.clear();
});
}  // namespace

@interface NSWindow () {
 @public
  NSRect contentRect_;
  NSBackingStoreType backing_;
  BOOL isDeferred_, isCentered_, isVisible_, isInFront_, isClosing_;
  NSView* content_;
  __weak id delegate_;
}
@end
namespace {
/// The window that the user sees above all others and can click into.
NSWindow* frontWindow() {
  NSWindow* front = nil;
  for (NSWindow* each : state().windows) {
    if (each.isVisible && each->isInFront_) front = each;
  }
  if (front == nil) die("a test wants to click into a window, and the user sees none");
  return front;
}
void clickInto(NSWindow* window) {
  activateApplication();
  state().key = window;
}
void lastWindowMayHaveClosed() {
  for (NSWindow* each : state().windows) {
    if (each->isVisible_) return;
  }
  const id<NSApplicationDelegate> delegate = NSApp.delegate;
  if ([delegate respondsToSelector:@selector(applicationShouldTerminateAfterLastWindowClosed:)] &&
      [delegate applicationShouldTerminateAfterLastWindowClosed:NSApp]) {
    [NSApp terminate:nil];
  }
}
}  // namespace

void lexwend::doubles::appearanceChanged() {
  for (NSWindow* each : state().windows) {
    [each->content_ viewDidChangeEffectiveAppearance];
  }
}

@implementation NSWindow
@synthesize title, level, releasedWhenClosed, styleMask, windowController;
- (instancetype)initWithContentRect:(NSRect)contentRect
                          styleMask:(NSWindowStyleMask)style
                            backing:(NSBackingStoreType)backing
                              defer:(BOOL)flag {
  requireApplication();
  record(decimal(contentRect.size.width) + "x" + decimal(contentRect.size.height) + ", " +
         std::to_string(style) + ", " + std::to_string(backing) + ", " + truth(flag));
  if (backing != NSBackingStoreBuffered) die("a window without a buffer");
  self = [super init];
  contentRect_ = contentRect;
  styleMask = style;
  backing_ = backing;
  isDeferred_ = flag;
  releasedWhenClosed = YES;
  title = @"";
  content_ = [[NSView alloc] initWithFrame:NSMakeRect(0, 0, contentRect.size.width, contentRect.size.height)];
  content_->window_ = self;
  state().windows.push_back(self);
  return self;
}
- (void)dealloc {
  if (isClosing_) {
    die("a window went while it was closing: whoever ends its owner must keep it until the next event");
  }
  std::erase(state().windows, self);
  if (state().key == self) state().key = nil;
  content_->window_ = nil;
  [content_ release];
  [title release];
  [super dealloc];
}
- (NSView*)contentView {
  return content_;
}
- (void)setDelegate:(id<NSWindowDelegate>)delegate {
  delegate_ = delegate;
}
- (BOOL)isVisible {
  return isVisible_ && !NSApp.isHidden;
}
- (void)center {
  called();
  isCentered_ = YES;
}
- (void)close {
  called();
  // A window may be closed again from its own notification.
  const BOOL isNested = isClosing_;
  isClosing_ = YES;
  if (!isNested) {
    // Nothing keeps the window and its delegate but those who own them.
    const id delegate = unowned(&delegate_);
    NSNotification* closing = nil;
    @autoreleasepool {
      closing = [[NSNotification notificationWithName:@"NSWindowWillCloseNotification" object:self] retain];
    }
    if ([delegate respondsToSelector:@selector(windowWillClose:)]) [delegate windowWillClose:closing];
    [closing release];
  }
  const BOOL wasVisible = isVisible_;
  isVisible_ = isInFront_ = NO;
  if (state().key == self) state().key = nil;
  if (isNested) return;
  isClosing_ = NO;
  if (wasVisible) lastWindowMayHaveClosed();
  if (releasedWhenClosed) [self release];
}
- (void)performClose:(id)sender {
  requireMainThread();
  if ((styleMask & NSWindowStyleMaskClosable) == 0) return;
  const id delegate = unowned(&delegate_);
  if ([delegate respondsToSelector:@selector(windowShouldClose:)] && ![delegate windowShouldClose:self]) {
    return;
  }
  [self close];
}
- (void)makeKeyAndOrderFront:(id)sender {
  called();
  isVisible_ = YES;
  // Those of an application that is not active stay behind those of the active one.
  if (isApplicationActive()) isInFront_ = YES;
  state().key = self;
}
- (void)orderFrontRegardless {
  requireMainThread();
  if (contentRect_.size.width <= 0) die("-[NSWindow orderFrontRegardless] of a window without a size");
  isVisible_ = isInFront_ = YES;
}
- (void)orderOut:(id)sender {
  record();
  isVisible_ = isInFront_ = NO;
  if (state().key == self) state().key = nil;
}
@end

@interface NSWindowController () {
  NSWindow* window_;
}
@end
@implementation NSWindowController
- (instancetype)initWithWindow:(NSWindow*)window {
  requireApplication();
  self = [super init];
  window_ = [window retain];
  window.windowController = self;
  return self;
}
- (void)dealloc {
  window_.windowController = nil;
  [window_ release];
  [super dealloc];
}
- (NSWindow*)window {
  return window_;
}
- (void)showWindow:(id)sender {
  record();
  [window_ makeKeyAndOrderFront:sender];
}
@end

@interface NSAlert () {
  NSMutableArray* buttons_;
  NSWindow* window_;
}
@end
@implementation NSAlert
@synthesize messageText, informativeText, alertStyle;
- (instancetype)init {
  requireApplication();
  self = [super init];
  messageText = @"";
  informativeText = @"";
  buttons_ = [[NSMutableArray alloc] init];
  return self;
}
- (void)dealloc {
  [messageText release];
  [informativeText release];
  [buttons_ release];
  window_.releasedWhenClosed = NO;
  [window_ release];
  [super dealloc];
}
- (NSButton*)addButtonWithTitle:(NSString*)title {
  requireKind(title, [NSString class]);
  record(utf8(title));
  NSButton* button = [NSButton buttonWithTitle:title target:nil action:nullptr];
  if (buttons_.count == 0) {
    button.keyEquivalent = @"\r";
  } else if ([title isEqualToString:@"Cancel"]) {
    button.keyEquivalent = @"\033";
  }
  [buttons_ addObject:button];
  return button;
}
- (NSArray*)buttons {
  return buttons_;
}
/// Has a size only once it was laid out.
- (NSWindow*)window {
  if (window_ == nil) {
    window_ = [[NSWindow alloc] initWithContentRect:NSZeroRect
                                          styleMask:NSWindowStyleMaskTitled
                                            backing:NSBackingStoreBuffered
                                              defer:YES];
  }
  return window_;
}
- (void)layout {
  self.window->contentRect_ = NSMakeRect(0, 0, 260, 180);
}
- (NSModalResponse)runModal {
  requireApplication();
  record(utf8(messageText));
  alerts::Alert shown{utf8(messageText), utf8(informativeText), {}};
  for (NSButton* button in buttons_) shown.buttons.push_back(utf8(button.title));
  state().alertsShown.push_back(shown);
  [self layout];
  [window_ makeKeyAndOrderFront:nil];
  const long answer = [self answerTo:shown];
  // Whoever answers has clicked into it, unless it had the keyboard already.
  clickInto(window_);
  [window_ orderOut:nil];
  return answer;
}
- (long)answerTo:(const alerts::Alert&)shown {
  if (!window_.isVisible || !window_->isInFront_)
    die("an alert that the user does not see: " + shown.messageText);
  if (state().alertAnswers.empty() && state().alertAnswer) return state().alertAnswer(shown);
  if (state().alertAnswers.empty()) die("an alert that no test answers: " + shown.messageText);
  const auto [answer, after] = state().alertAnswers.front();
  state().alertAnswers.erase(state().alertAnswers.begin());
  time::advanceInModalPanel(after);
  if (answer != kEscape && answer != kReturn) return answer;
  for (NSUInteger i = 0; i < buttons_.count; ++i) {
    if ([[buttons_[i] keyEquivalent] isEqualToString:answer == kEscape ? @"\033" : @"\r"]) {
      return NSAlertFirstButtonReturn + (long)i;
    }
  }
  die("the alert does not hear the key: " + shown.messageText);
}
@end

@interface NSEvent () {
 @public
  NSEventType type_;
  NSEventModifierFlags flags_;
  unsigned short keyCode_;
}
@end
@implementation NSEvent
+ (NSEvent*)keyEventWithType:(NSEventType)type
                       location:(NSPoint)location
                  modifierFlags:(NSEventModifierFlags)flags
                      timestamp:(NSTimeInterval)time
                   windowNumber:(NSInteger)windowNumber
                        context:(NSGraphicsContext*)context
                     characters:(NSString*)characters
    charactersIgnoringModifiers:(NSString*)charactersIgnoringModifiers
                      isARepeat:(BOOL)isARepeat
                        keyCode:(unsigned short)keyCode {
  NSEvent* made = [[self alloc] init];
  made->type_ = type;
  made->flags_ = flags;
  made->keyCode_ = keyCode;
  return [made autorelease];
}
+ (id)addLocalMonitorForEventsMatchingMask:(NSEventMask)mask handler:(NSEvent* (^)(NSEvent*))block {
  requireApplication();
  requireNonnull((void*)block);
  record(std::to_string(mask));
  if (takeFailure()) return nil;
  LXWKeyMonitor* monitor = [[LXWKeyMonitor alloc] init];
  monitor->block = (NSEvent * (^)(NSEvent*))[(id)block copy];
  monitor->mask = mask;
  state().monitors.push_back(monitor);
  return [[monitor retain] autorelease];
}
+ (void)removeMonitor:(id)monitor {
  requireMainThread();
  requireKind(monitor, [LXWKeyMonitor class]);
  record();
  if (std::erase(state().monitors, (LXWKeyMonitor*)monitor) == 0) {
    die("+[NSEvent removeMonitor:]: removed once too often");
  }
  // The block goes at once, even when it is the one that is running.
  [(id)((LXWKeyMonitor*)monitor)->block release];
  ((LXWKeyMonitor*)monitor)->block = nil;
  [monitor release];
}
- (NSEventModifierFlags)modifierFlags {
  return flags_;
}
- (unsigned short)keyCode {
  if (type_ != NSEventTypeKeyDown && type_ != NSEventTypeKeyUp) {
    die("-[NSEvent keyCode] of an event without a key");
  }
  return keyCode_;
}
@end

namespace lexwend::doubles::windows {

std::vector<Window> all() {
  std::vector<Window> seen;
  @autoreleasepool {
    for (NSWindow* each : state().windows) {
      Window window;
      window.title = utf8(each.title);
      window.contentRect = rectOf(each->contentRect_);
      window.styleMask = each.styleMask;
      window.backing = each->backing_;
      window.isDeferred = each->isDeferred_;
      window.isReleasedWhenClosed = each.isReleasedWhenClosed;
      window.isCentered = each->isCentered_;
      window.isVisible = each.isVisible;
      window.isInFront = each.isVisible && each->isInFront_;
      window.isKey = state().key == each;
      window.level = each.level;
      window.hasController = each.windowController != nil;
      for (NSView* view in each->content_.subviews) window.controls.push_back(controlOf(view));
      seen.push_back(std::move(window));
    }
  }
  return seen;
}

void click(const std::string& buttonTitle) {
  @autoreleasepool {
    NSWindow* window = frontWindow();
    ::clickInto(window);
    NSButton* clicked = nil;
    @autoreleasepool {
      for (NSView* view in window->content_.subviews) {
        if ([view isKindOfClass:[NSButton class]] && utf8(((NSButton*)view).title) == buttonTitle) {
          clicked = (NSButton*)view;
        }
      }
    }
    if (clicked != nil) return [clicked performClick:nil];
  }
  die("a test clicks a button that is not there: " + buttonTitle);
}

void clickInto() { ::clickInto(frontWindow()); }

void closeByUser() {
  @autoreleasepool {
    [frontWindow() performClose:nil];
  }
}

bool pressKey(std::uint16_t keyCode, std::uint64_t modifierFlags) {
  if (!isApplicationActive()) return false;
  @autoreleasepool {
    NSEvent* event = [NSEvent keyEventWithType:NSEventTypeKeyDown
                                      location:NSZeroPoint
                                 modifierFlags:modifierFlags
                                     timestamp:0
                                  windowNumber:0
                                       context:nil
                                    characters:@""
                   charactersIgnoringModifiers:@""
                                     isARepeat:NO
                                       keyCode:keyCode];
    const auto monitors = state().monitors;
    for (LXWKeyMonitor* monitor : monitors) {
      if ((monitor->mask & NSEventMaskKeyDown) == 0) continue;
      // The handler may remove its own monitor, and with it the block that runs.
      event = monitor->block(event);
      if (event == nil) return true;
    }
    return false;
  }
}

std::size_t localMonitors() { return state().monitors.size(); }

}  // namespace lexwend::doubles::windows

namespace lexwend::doubles::alerts {
void answerNext(long response, std::chrono::microseconds after) {
  state().alertAnswers.push_back({response, after});
}
void answerNextWithEscape() { answerNext(kEscape); }
void answerNextWithReturn() { answerNext(kReturn); }
void answerWith(std::function<long(const Alert&)> answer) { state().alertAnswer = std::move(answer); }
std::vector<Alert> shown() { return state().alertsShown; }
}  // namespace lexwend::doubles::alerts
