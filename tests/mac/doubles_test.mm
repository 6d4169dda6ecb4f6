// SPDX-License-Identifier: MIT
// The doubles of the frameworks: that they hold state as the real ones do, and that they punish what those
// punish.
#import <AppKit/AppKit.h>
#import <Carbon/Carbon.h>
#import <ServiceManagement/ServiceManagement.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <thread>

#include "tests/mac/doubles/control.h"

namespace {

using namespace lexwend::doubles;
using std::chrono::milliseconds;
using testing::ElementsAre;

std::string text(NSString* string) { return string == nil ? "(nil)" : string.UTF8String; }

TEST(Doubles, layoutsAreFilteredAndTheirPropertiesRead) {
  Session session;
  input_sources::Source us;
  us.id = std::string("com.apple.keylayout.US");
  us.languages = std::vector<std::string>{"en"};
  us.unicodeKeyLayoutData =
      input_sources::layoutData({{{0, 0}, {u"a"}}, {{1, 0}, {u"", true}}, {{2, 0}, {u"12345678"}}});
  input_sources::install(us);
  input_sources::Source method;
  method.type = "TISTypeKeyboardInputMethodWithoutModes";
  input_sources::install(method);
  @autoreleasepool {
    NSDictionary* filter = @{
      (__bridge id)kTISPropertyInputSourceType : (__bridge id)kTISTypeKeyboardLayout,
      (__bridge id)kTISPropertyInputSourceIsEnabled : @YES
    };
    CFArrayRef list = TISCreateInputSourceList((__bridge CFDictionaryRef)filter, false);
    ASSERT_EQ(CFArrayGetCount(list), 1);
    auto source = (TISInputSourceRef) const_cast<void*>(CFArrayGetValueAtIndex(list, 0));
    auto data = static_cast<CFDataRef>(TISGetInputSourceProperty(source, kTISPropertyUnicodeKeyLayoutData));
    const auto* layout = reinterpret_cast<const UCKeyboardLayout*>(CFDataGetBytePtr(data));
    UInt32 dead = 0;
    UniChar units[8];
    UniCharCount count = 0;
    EXPECT_EQ(UCKeyTranslate(layout, 2, kUCKeyActionDown, 0, LMGetKbdType(), 0, &dead, 8, &count, units),
              noErr);
    EXPECT_EQ(count, 8u);
    EXPECT_EQ(UCKeyTranslate(layout, 1, kUCKeyActionDown, 0, LMGetKbdType(), 0, &dead, 8, &count, units),
              noErr);
    EXPECT_EQ(count, 0u);
    EXPECT_NE(dead, 0u);
    EXPECT_EQ(UCKeyTranslate(layout, 0, kUCKeyActionDown, 0, LMGetKbdType(), 0, &dead, 8, &count, units),
              noErr);
    EXPECT_EQ(count, 2u) << "the dead key's accent comes with the next key";
    CFRelease(list);
  }
  EXPECT_THAT(
      callsNamed("TISCreateInputSourceList"),
      ElementsAre(Call{"TISCreateInputSourceList", "{TISPropertyInputSourceType=TISTypeKeyboardLayout, "
                                                   "TISPropertyInputSourceIsEnabled=true}, false"}));
  EXPECT_EQ(session.unbalancedObjects(), "");
}

TEST(Doubles, pasteboardKeepsItemsAndForgetsThemOnAChange) {
  Session session;
  pasteboard::otherAppCopies(
      {{{"public.rtf", bytesOf("r"), false}, {"public.utf8-plain-text", bytesOf("t"), true}},
       {{"public.png", std::nullopt, false}}});
  @autoreleasepool {
    NSPasteboard* board = NSPasteboard.generalPasteboard;
    NSPasteboardItem* first = board.pasteboardItems[0];
    EXPECT_EQ(first.types.count, 2u);
    EXPECT_EQ([first dataForType:@"public.rtf"].length, 1u);
    EXPECT_EQ([board.pasteboardItems[1] dataForType:@"public.png"], nil);
    EXPECT_EQ(text([board stringForType:NSPasteboardTypeString]), "t");
    EXPECT_FALSE([board setString:@"x" forType:NSPasteboardTypeString]) << "not cleared by this process";
    [board clearContents];
    EXPECT_EQ(first.types.count, 0u);
    EXPECT_TRUE([board setString:@"x" forType:NSPasteboardTypeString]);
    EXPECT_EQ(text([board stringForType:NSPasteboardTypeString]), "x");
  }
  EXPECT_EQ(pasteboard::promisesKept(), 1);
  EXPECT_EQ(session.unbalancedObjects(), "");
}

int fired = 0;
OSStatus countPress(EventHandlerCallRef, EventRef event, void*) {
  EventHotKeyID id = {0, 0};
  GetEventParameter(event, kEventParamDirectObject, typeEventHotKeyID, nullptr, sizeof id, nullptr, &id);
  fired += static_cast<int>(id.id);
  return noErr;
}

TEST(Doubles, hotKeysAreDispatchedToTheHandler) {
  const Session session;
  const EventTypeSpec type = {kEventClassKeyboard, kEventHotKeyPressed};
  ASSERT_EQ(InstallEventHandler(GetApplicationEventTarget(), countPress, 1, &type, nullptr, nullptr), noErr);
  EventHotKeyRef ref = nullptr;
  hot_keys::failNextRegistration(eventHotKeyExistsErr);
  EXPECT_EQ(RegisterEventHotKey(120, 0, {0x544B5652, 7}, GetApplicationEventTarget(), 0, &ref),
            eventHotKeyExistsErr);
  EXPECT_EQ(RegisterEventHotKey(120, 0, {0x544B5652, 7}, GetApplicationEventTarget(), 0, &ref), noErr);
  fired = 0;
  EXPECT_EQ(hot_keys::press(120, 0), noErr);
  EXPECT_EQ(fired, 7);
  hot_keys::failNextEventParameter(eventParameterNotFoundErr);
  hot_keys::press(120, 0);
  EXPECT_EQ(fired, 7);
  EXPECT_EQ(UnregisterEventHotKey(ref), noErr);
  EXPECT_EQ(hot_keys::press(120, 0), std::nullopt);
}

TEST(Doubles, timePassesByHand) {
  Session session;
  @autoreleasepool {
    std::string steps;
    std::string* order = &steps;
    dispatch_after(dispatch_time(DISPATCH_TIME_NOW, 500 * static_cast<int64_t>(NSEC_PER_MSEC)),
                   dispatch_get_main_queue(), ^{
                     *order += "work ";
                   });
    NSTimer* timer = [NSTimer scheduledTimerWithTimeInterval:2.0
                                                     repeats:YES
                                                       block:^(NSTimer*) {
                                                         *order += "tick ";
                                                       }];
    lexwend::doubles::time::later(milliseconds(100), [order] { *order += "outer "; });
    usleep(200'000);
    EXPECT_EQ(steps, "outer ");
    lexwend::doubles::time::advance(milliseconds(4000));
    EXPECT_EQ(steps, "outer work tick tick ");
    [timer invalidate];
    EXPECT_EQ(lexwend::doubles::time::scheduledTimers(), 0u);
  }
  EXPECT_EQ(session.unbalancedObjects(), "");
}

TEST(Doubles, observersRunWhenTheSystemPosts) {
  Session session;
  @autoreleasepool {
    __block int woken = 0;
    [NSWorkspace.sharedWorkspace.notificationCenter addObserverForName:NSWorkspaceDidWakeNotification
                                                                object:nil
                                                                 queue:NSOperationQueue.mainQueue
                                                            usingBlock:^(NSNotification*) {
                                                              ++woken;
                                                            }];
    workspace::postDidWake();
    input_sources::postEnabledSourcesChanged();
    EXPECT_EQ(woken, 1);
  }
  EXPECT_EQ(session.unbalancedObjects(), "");
}

TEST(Doubles, numbersAndTruthValuesDiffer) {
  const Session session;
  defaults::set("flag", true);
  defaults::set("number", std::int64_t{1});
  @autoreleasepool {
    NSUserDefaults* store = NSUserDefaults.standardUserDefaults;
    EXPECT_EQ(CFGetTypeID((__bridge CFTypeRef)[store objectForKey:@"flag"]), CFBooleanGetTypeID());
    EXPECT_EQ(CFGetTypeID((__bridge CFTypeRef)[store objectForKey:@"number"]), CFNumberGetTypeID());
    [store setInteger:-1 forKey:@"number"];
  }
  EXPECT_EQ(std::get<std::int64_t>(*defaults::get("number")), -1);
}

TEST(Doubles, statusItemLeavesTheBarWhenNobodyKeepsIt) {
  Session session;
  @autoreleasepool {
    [NSApplication sharedApplication];
    NSStatusItem* item = [NSStatusBar.systemStatusBar statusItemWithLength:NSSquareStatusItemLength];
    item.button.image = [NSImage imageWithSystemSymbolName:@"keyboard" accessibilityDescription:@"Lexwend"];
    [item.button.image setTemplate:YES];
    const auto seen = status_bar::items();
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].length, -2);
    EXPECT_EQ(seen[0].image, (status_bar::Image{"keyboard", "Lexwend", true}));
  }
  EXPECT_EQ(status_bar::items().size(), 0u);
  EXPECT_EQ(session.unbalancedObjects(), "");
}

TEST(Doubles, loginItemReportsItsErrors) {
  const Session session;
  login_item::failNext(1);
  @autoreleasepool {
    NSError* error = nil;
    EXPECT_FALSE([SMAppService.mainAppService registerAndReturnError:&error]);
    EXPECT_EQ(error.code, 1);
    EXPECT_TRUE([SMAppService.mainAppService registerAndReturnError:&error]);
  }
  EXPECT_EQ(login_item::status(), SMAppServiceStatusEnabled);
}

TEST(Doubles, filesAreAppendedAndCreated) {
  const Session session;
  const std::string path = testing::TempDir() + "lexwend_doubles_" + std::to_string(getpid()) + ".log";
  @autoreleasepool {
    NSURL* url = [NSURL fileURLWithPath:[NSString stringWithUTF8String:path.c_str()]];
    EXPECT_EQ([NSFileHandle fileHandleForWritingToURL:url error:nil], nil);
    EXPECT_TRUE([[@"one\n" dataUsingEncoding:NSUTF8StringEncoding] writeToURL:url options:0 error:nil]);
    NSFileHandle* handle = [NSFileHandle fileHandleForWritingToURL:url error:nil];
    [handle seekToEndOfFile];
    [handle writeData:[@"two\n" dataUsingEncoding:NSUTF8StringEncoding]];
    EXPECT_TRUE([handle closeAndReturnError:nil]);
    NSData* whole = [NSData dataWithContentsOfURL:url];
    EXPECT_EQ(text([[NSString alloc] initWithData:whole encoding:NSUTF8StringEncoding]), "one\ntwo\n");
  }
  std::remove(path.c_str());
}

TEST(Doubles, datesFollowTheirPattern) {
  const Session session;
  lexwend::doubles::time::setWallClock(1709647629.042);
  @autoreleasepool {
    NSDateFormatter* formatter = [[NSDateFormatter alloc] init];
    formatter.dateFormat = @"yyyy-MM-dd HH:mm:ss.SSS";
    NSString* shown = [formatter stringFromDate:[NSDate date]];
    EXPECT_EQ(shown.length, 23u);
    EXPECT_EQ(text([shown substringFromIndex:17]), "09.042");
  }
}

TEST(Doubles, accessibilityAnswersAreScripted) {
  Session session;
  accessibility::setFocused({kAXErrorSuccess, {}, true});
  accessibility::Attribute value;
  value.replies = {{0, std::string("before")}, {kAXErrorCannotComplete, {}}};
  accessibility::setAttribute("AXValue", value);
  @autoreleasepool {
    AXUIElementRef system = AXUIElementCreateSystemWide();
    CFTypeRef focused = nullptr;
    ASSERT_EQ(AXUIElementCopyAttributeValue(system, CFSTR("AXFocusedUIElement"), &focused), kAXErrorSuccess);
    EXPECT_EQ(CFGetTypeID(focused), AXUIElementGetTypeID());
    auto element = static_cast<AXUIElementRef>(focused);
    CFTypeRef text = nullptr;
    EXPECT_EQ(AXUIElementCopyAttributeValue(element, kAXValueAttribute, &text), kAXErrorSuccess);
    CFRelease(text);
    EXPECT_EQ(AXUIElementCopyAttributeValue(element, kAXValueAttribute, &text), kAXErrorCannotComplete);
    EXPECT_EQ(AXUIElementCopyAttributeValue(element, kAXRoleAttribute, &text), kAXErrorAttributeUnsupported);
    CFRelease(focused);
    CFRelease(system);
  }
  EXPECT_EQ(session.unbalancedObjects(), "");
}

void writeAnItemTwice() {
  NSPasteboardItem* item = [[NSPasteboardItem alloc] init];
  [item setData:[@"x" dataUsingEncoding:NSUTF8StringEncoding] forType:NSPasteboardTypeString];
  [NSPasteboard.generalPasteboard clearContents];
  [NSPasteboard.generalPasteboard writeObjects:@[ item ]];
  [NSPasteboard.generalPasteboard writeObjects:@[ item ]];
}
void writeAnItemThatWasRead() {
  pasteboard::otherAppCopiesText("x");
  [NSPasteboard.generalPasteboard writeObjects:NSPasteboard.generalPasteboard.pasteboardItems];
}
void touchUserInterfaceElsewhere() {
  [NSApplication sharedApplication];
  std::thread([] { (void)[[NSView alloc] initWithFrame:NSZeroRect]; }).join();
}
void makeAWindowTooEarly() {
  (void)[[NSWindow alloc] initWithContentRect:NSZeroRect styleMask:0 backing:NSBackingStoreBuffered defer:NO];
}
void takeAStringForAnArray() { CFArrayGetCount((CFArrayRef)(CFTypeRef)CFSTR("x")); }
void releaseNull() { CFRelease(nullptr); }
void putNilIntoAnArray() {
  NSMutableArray* array = [NSMutableArray array];
  id nothing = nil;
  [array addObject:nothing];
}
void unregisterTwice() {
  EventHotKeyRef ref = nullptr;
  RegisterEventHotKey(1, 0, {1, 1}, GetApplicationEventTarget(), 0, &ref);
  UnregisterEventHotKey(ref);
  UnregisterEventHotKey(ref);
}
void showAnAlertNobodyAnswers() {
  [[NSApplication sharedApplication] activateIgnoringOtherApps:YES];
  [[[NSAlert alloc] init] runModal];
}
void showAnAlertBehindOtherWindows() {
  [NSApplication sharedApplication];
  [[[NSAlert alloc] init] runModal];
}
void removeAMonitorTwice() {
  [NSApplication sharedApplication];
  id monitor = [NSEvent addLocalMonitorForEventsMatchingMask:NSEventMaskKeyDown
                                                     handler:^NSEvent*(NSEvent* event) {
                                                       return event;
                                                     }];
  [NSEvent removeMonitor:monitor];
  [NSEvent removeMonitor:monitor];
}

TEST(DoublesDeath, endTheProcessOnWhatTheSystemPunishes) {
  const Session session;
  EXPECT_DEATH(writeAnItemTwice(), "macOS: .*already belongs to a pasteboard");
  EXPECT_DEATH(writeAnItemThatWasRead(), "macOS: .*already belongs to a pasteboard");
  EXPECT_DEATH(touchUserInterfaceElsewhere(), "macOS: -\\[NSView initWithFrame:\\] off the main thread");
  EXPECT_DEATH(makeAWindowTooEarly(), "macOS: .*before the shared application was made");
  EXPECT_DEATH(takeAStringForAnArray(), "macOS: CFArrayGetCount: wrong type");
  EXPECT_DEATH(releaseNull(), "macOS: CFRelease: nil");
  EXPECT_DEATH(putNilIntoAnArray(), "macOS: -\\[NSMutableArray addObject:\\]: nil");
  EXPECT_DEATH(unregisterTwice(), "macOS: UnregisterEventHotKey");
  EXPECT_DEATH(showAnAlertNobodyAnswers(), "macOS: an alert that no test answers");
  EXPECT_DEATH(showAnAlertBehindOtherWindows(), "macOS: an alert that the user does not see");
  EXPECT_DEATH(removeAMonitorTwice(), "macOS: \\+\\[NSEvent removeMonitor:\\]: removed once too often");
}

}  // namespace
