// SPDX-License-Identifier: MIT
// The application object, the running applications and the workspace.
#pragma once
#include <AppKit/NSEvent.h>
#include <AppKit/NSWindows.h>

NS_ASSUME_NONNULL_BEGIN

#ifndef IBAction
#define IBAction void
#endif
#ifndef IBOutlet
#define IBOutlet
#endif

@class NSApplication;
typedef NS_ENUM(NSInteger, NSApplicationActivationPolicy) {
  NSApplicationActivationPolicyRegular = 0,
  NSApplicationActivationPolicyAccessory = 1,
  NSApplicationActivationPolicyProhibited = 2,
};
typedef NS_ENUM(NSUInteger, NSApplicationTerminateReply) {
  NSTerminateCancel = 0,
  NSTerminateNow = 1,
  NSTerminateLater = 2,
};
@protocol NSApplicationDelegate <NSObject>
@optional
- (void)applicationWillFinishLaunching:(NSNotification*)notification;
- (void)applicationDidFinishLaunching:(NSNotification*)notification;
- (NSApplicationTerminateReply)applicationShouldTerminate:(NSApplication*)sender;
- (void)applicationWillTerminate:(NSNotification*)notification;
- (BOOL)applicationShouldTerminateAfterLastWindowClosed:(NSApplication*)sender;
- (BOOL)applicationSupportsSecureRestorableState:(NSApplication*)application;
@end

@interface NSApplication : NSResponder
@property(class, readonly, strong) __kindof NSApplication* sharedApplication;
@property(nullable, weak) id<NSApplicationDelegate> delegate;
- (void)activateIgnoringOtherApps:(BOOL)ignoreOtherApps API_DEPRECATED_MACOS(10.0, 14.0);
- (NSApplicationActivationPolicy)activationPolicy;
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy;
- (void)hide:(nullable id)sender;
- (void)unhideWithoutActivation;
- (void)finishLaunching;
- (void)run;
- (void)stop:(nullable id)sender;
- (void)terminate:(nullable id)sender;
- (void)postEvent:(NSEvent*)event atStart:(BOOL)atStart;
- (BOOL)sendAction:(SEL)action to:(nullable id)target from:(nullable id)sender;
@property(readonly, getter=isRunning) BOOL running;
@property(readonly, getter=isActive) BOOL active;
@property(readonly, getter=isHidden) BOOL hidden;
@property(nullable, readonly, weak) NSWindow* keyWindow;
@end
LXW_SDK_EXTERN __kindof NSApplication* _Null_unspecified NSApp;
LXW_SDK_EXTERN void NSBeep(void);

@interface NSRunningApplication : NSObject
+ (NSArray<NSRunningApplication*>*)runningApplicationsWithBundleIdentifier:(NSString*)bundleIdentifier;
@property(class, readonly, strong) NSRunningApplication* currentApplication;
@property(nullable, readonly, copy) NSString* bundleIdentifier;
@property(nullable, readonly, copy) NSString* localizedName;
@property(readonly) pid_t processIdentifier;
@property(readonly, getter=isTerminated) BOOL terminated;
@end

LXW_SDK_EXTERN NSNotificationName const NSWorkspaceDidWakeNotification;
LXW_SDK_EXTERN NSNotificationName const NSWorkspaceWillSleepNotification;
@interface NSWorkspace : NSObject
@property(class, readonly, strong) NSWorkspace* sharedWorkspace;
@property(readonly, strong) NSNotificationCenter* notificationCenter;
@property(nullable, readonly, strong) NSRunningApplication* frontmostApplication;
@property(readonly, copy) NSArray<NSRunningApplication*>* runningApplications;
- (BOOL)openURL:(NSURL*)url;
@end

NS_ASSUME_NONNULL_END
