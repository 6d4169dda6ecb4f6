// SPDX-License-Identifier: MIT
// The application object, the running applications and the workspace.
#include "tests/mac/doubles/user_interface.h"
#include "tests/mac/runtime/runtime.h"

using namespace lexwend;
using namespace lexwend::doubles;

__kindof NSApplication* NSApp = nil;
NSNotificationName const NSWorkspaceDidWakeNotification = @"NSWorkspaceDidWakeNotification";
NSNotificationName const NSWorkspaceWillSleepNotification = @"NSWorkspaceWillSleepNotification";

namespace {
struct State {
  std::optional<long> policy;
  int activations = 0;
  bool isActive = false, isHidden = false, isActivationRefused = false;
  int beeps = 0;
  bool isTerminated = false;
  bool isRunning = false;
  std::function<void()> eventLoop;
  std::optional<workspace::Running> frontmost;
  std::vector<workspace::Running> running;
  std::vector<std::string> openedUrls;
};
State& state() {
  static auto* the = new State;
  return *the;
}
/// A fresh process has no application object.
void dropApplication() {
  NSApp.delegate = nil;
  [NSApp release];
  NSApp = nil;
}
const ResetHook kReset([] {
  state() = State{};
  dropApplication();
});
const ProcessEndHook kProcessEnd([] {
  dropApplication();
  state().isActive = state().isHidden = false;
  state().policy.reset();
  state().isTerminated = false;
  state().eventLoop = nullptr;
});
}  // namespace

bool lexwend::doubles::isApplicationActive() { return state().isActive; }
void lexwend::doubles::activateApplication() {
  if (NSApp == nil) die("there is no application to activate");
  state().isActive = true;
  state().isHidden = false;
  deliverHeldNotifications();
}

@interface NSApplication () {
  __weak id delegate_;
}
@end
@implementation NSApplication
+ (NSApplication*)sharedApplication {
  called();
  if (NSApp == nil) NSApp = [[NSApplication alloc] init];
  return NSApp;
}
- (id<NSApplicationDelegate>)delegate {
  return delegate_;
}
- (void)setDelegate:(id<NSApplicationDelegate>)delegate {
  requireMainThread();
  if (delegate != nil) record();
  delegate_ = delegate;
}
- (void)activateIgnoringOtherApps:(BOOL)ignoresOtherApps {
  called(truth(ignoresOtherApps));
  ++state().activations;
  // Only who ignores the others comes to the front while another application is active.
  if (ignoresOtherApps && !state().isActivationRefused) activateApplication();
}
- (void)hide:(id)sender {
  called();
  state().isHidden = true;
  state().isActive = false;
}
- (void)unhideWithoutActivation {
  requireMainThread();
  state().isHidden = false;
}
- (BOOL)isHidden {
  return state().isHidden;
}
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy {
  called(std::to_string(policy));
  state().policy = policy;
  return YES;
}
- (void)finishLaunching {
  const id<NSApplicationDelegate> delegate = self.delegate;
  if (![delegate respondsToSelector:@selector(applicationSupportsSecureRestorableState:)] ||
      ![delegate applicationSupportsSecureRestorableState:self]) {
    die("WARNING: Secure coding is not enabled for restorable state");
  }
  NSNotification* notification =
      [NSNotification notificationWithName:@"NSApplicationDidFinishLaunchingNotification" object:self];
  if ([delegate respondsToSelector:@selector(applicationDidFinishLaunching:)]) {
    [delegate applicationDidFinishLaunching:notification];
  }
}
- (void)run {
  called();
  if (state().isRunning) die("-[NSApplication run] within itself");
  if (self.delegate == nil) die("-[NSApplication run] without a delegate that is still alive");
  state().isRunning = true;
  @autoreleasepool {
    [self finishLaunching];
    if (state().eventLoop) state().eventLoop();
  }
  state().isRunning = false;
}
- (void)terminate:(id)sender {
  called();
  const id<NSApplicationDelegate> delegate = self.delegate;
  if ([delegate respondsToSelector:@selector(applicationShouldTerminate:)] &&
      [delegate applicationShouldTerminate:self] != NSTerminateNow) {
    return;
  }
  // The real one ends the process here; a test goes on and sees that it was asked for.
  state().isTerminated = true;
}
- (BOOL)isActive {
  return state().isActive;
}
@end

void NSBeep() {
  record();
  ++state().beeps;
}

@interface NSRunningApplication () {
 @public
  workspace::Running running_;
}
@end
@implementation NSRunningApplication
static NSRunningApplication* makeRunning(const workspace::Running& running) {
  NSRunningApplication* made = [[[NSRunningApplication alloc] init] autorelease];
  made->running_ = running;
  return made;
}
+ (NSArray*)runningApplicationsWithBundleIdentifier:(NSString*)identifier {
  requireKind(identifier, [NSString class]);
  record(utf8(identifier));
  NSMutableArray* found = [NSMutableArray array];
  for (const auto& each : state().running) {
    if (each.bundleIdentifier == utf8(identifier)) [found addObject:makeRunning(each)];
  }
  return found;
}
+ (NSRunningApplication*)currentApplication {
  return makeRunning(
      {utf8([NSBundle mainBundle].bundleIdentifier), [NSProcessInfo processInfo].processIdentifier});
}
- (NSString*)bundleIdentifier {
  return running_.bundleIdentifier ? string(*running_.bundleIdentifier) : nil;
}
- (pid_t)processIdentifier {
  return running_.processIdentifier;
}
@end

@interface NSNotificationCenter ()
+ (NSNotificationCenter*)makeOfKind:(const char*)kind;
@end
@implementation NSWorkspace
+ (NSWorkspace*)sharedWorkspace {
  record();
  static NSWorkspace* the = keptForever([[NSWorkspace alloc] init]);
  return the;
}
- (NSNotificationCenter*)notificationCenter {
  static NSNotificationCenter* the = [NSNotificationCenter makeOfKind:"workspace"];
  return the;
}
- (NSRunningApplication*)frontmostApplication {
  record();
  if (state().isActive) return [NSRunningApplication currentApplication];
  return state().frontmost ? makeRunning(*state().frontmost) : nil;
}
- (BOOL)openURL:(NSURL*)url {
  requireKind(url, [NSURL class]);
  record(utf8(url.absoluteString));
  state().openedUrls.push_back(utf8(url.absoluteString));
  return YES;
}
@end

namespace lexwend::doubles::app {
bool exists() { return NSApp != nil; }
std::optional<long> activationPolicy() { return state().policy; }
int activations() { return state().activations; }
bool isActive() { return state().isActive; }
void refuseActivation() { state().isActivationRefused = true; }
void userSwitchesToOther() { state().isActive = false; }
bool isTerminated() { return state().isTerminated; }
int beeps() { return state().beeps; }
void setEventLoop(std::function<void()> body) { state().eventLoop = std::move(body); }
}  // namespace lexwend::doubles::app

namespace lexwend::doubles::workspace {
void setFrontmost(const std::optional<Running>& application) {
  state().frontmost = application;
  state().isActive = false;
}
void setRunning(const std::vector<Running>& applications) { state().running = applications; }
std::vector<std::string> openedUrls() { return state().openedUrls; }
void postDidWake() {
  postTo([NSWorkspace sharedWorkspace].notificationCenter, NSWorkspaceDidWakeNotification);
}
}  // namespace lexwend::doubles::workspace
