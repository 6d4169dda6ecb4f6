// SPDX-License-Identifier: MIT
// The Objective-C runtime of the tests, seen from code that ARC compiled.
#import <AppKit/AppKit.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "tests/mac/doubles/control.h"
#include "tests/mac/runtime/runtime.h"

namespace {
int destroyedMembers = 0;
struct Member {
  std::string text = "made";
  ~Member() { ++destroyedMembers; }
};
}  // namespace

@protocol Greeting <NSObject>
- (NSString*)greeting;
@optional
- (void)farewell;
@end

@interface Animal : NSObject <Greeting> {
  Member member_;
}
@property(copy) NSString* name;
@property(weak) Animal* friendOfIt;
@property int legs;
- (const std::string&)memberText;
@end
@implementation Animal
- (NSString*)greeting {
  return [@"I am " stringByAppendingString:self.name];
}
- (const std::string&)memberText {
  return member_.text;
}
@end

// A subclass of a double whose size no header tells, as the host's own window controller is.
@interface WideController : NSWindowController {
  Member member_;
  double first_;
}
@property int second;
@property(copy) NSString* third;
@end
@implementation WideController
- (instancetype)initWithWindow:(NSWindow*)window {
  if ((self = [super initWithWindow:window])) {
    first_ = 1.5;
    _second = 2;
    _third = @"three";
  }
  return self;
}
- (double)sum {
  return first_ + _second + (double)_third.length;
}
- (NSWindow*)window {
  return [super window];
}
@end

@interface NSString (ReversedForTest)
- (NSString*)twice;
@end
@implementation NSString (ReversedForTest)
- (NSString*)twice {
  return [self stringByAppendingString:self];
}
@end

namespace {

using lexwend::doubles::Session;

std::string text(NSString* string) { return string.UTF8String; }

TEST(Runtime, sendsMessagesWithEveryKindOfResult) {
  const Session session;
  @autoreleasepool {
    EXPECT_EQ(text([@"ab" twice]), "abab");
    [NSApplication sharedApplication];
    NSView* view = [[NSView alloc] initWithFrame:NSMakeRect(1, 2, 3, 4)];
    EXPECT_EQ(view.frame.size.height, 4);  // returned in memory
    NSView* none = nil;
    EXPECT_EQ(none.frame.size.height, 0);
    EXPECT_EQ([none.subviews count], 0u);
    EXPECT_EQ([NSFont systemFontOfSize:30].pointSize, 30);
  }
}

TEST(Runtime, constructsAndDestroysMembersOfCxxTypes) {
  const Session session;
  destroyedMembers = 0;
  @autoreleasepool {
    Animal* animal = [[Animal alloc] init];
    EXPECT_EQ([animal memberText], "made");
  }
  EXPECT_EQ(destroyedMembers, 1);
}

TEST(Runtime, weakReferencesBecomeNil) {
  const Session session;
  Animal* survivor = [[Animal alloc] init];
  @autoreleasepool {
    Animal* other = [[Animal alloc] init];
    survivor.friendOfIt = other;
    EXPECT_EQ(survivor.friendOfIt, other);
    other = nil;
  }
  EXPECT_EQ(survivor.friendOfIt, nil);
}

TEST(Runtime, blocksKeepWhatTheyCaptureAndShareVariables) {
  Session session;
  __block int count = 0;
  void (^block)(void) = nil;
  __weak Animal* watched = nil;
  @autoreleasepool {
    Animal* animal = [[Animal alloc] init];
    watched = animal;
    block = ^{
      if (animal != nil) ++count;
    };
  }
  block();
  EXPECT_EQ(count, 1);
  EXPECT_NE(watched, nil);
  block = nil;
  EXPECT_EQ(watched, nil);
  EXPECT_EQ(session.unbalancedObjects(), "");
}

TEST(Runtime, movesInstanceVariablesBehindAWiderSuperclass) {
  const Session session;
  @autoreleasepool {
    [NSApplication sharedApplication];
    NSWindow* window = [[NSWindow alloc] initWithContentRect:NSMakeRect(0, 0, 10, 10)
                                                   styleMask:NSWindowStyleMaskTitled
                                                     backing:NSBackingStoreBuffered
                                                       defer:NO];
    window.releasedWhenClosed = NO;
    WideController* controller = [[WideController alloc] initWithWindow:window];
    EXPECT_EQ([controller sum], 8.5);
    EXPECT_EQ(controller.window, window);
    EXPECT_EQ(window.windowController, controller);
    EXPECT_GE(class_getInstanceSize([WideController class]),
              class_getInstanceSize([NSWindowController class]) + sizeof(Member) + sizeof(double));
  }
}

TEST(Runtime, knowsProtocolsAndOptionalMethods) {
  const Session session;
  Animal* animal = [[Animal alloc] init];
  EXPECT_TRUE([animal conformsToProtocol:@protocol(Greeting)]);
  EXPECT_TRUE([animal conformsToProtocol:@protocol(NSObject)]);
  EXPECT_FALSE([animal conformsToProtocol:@protocol(NSWindowDelegate)]);
  EXPECT_TRUE([animal respondsToSelector:@selector(greeting)]);
  EXPECT_FALSE([animal respondsToSelector:@selector(farewell)]);
}

TEST(Runtime, readsLiteralsBeyondAscii) {
  const Session session;
  EXPECT_EQ(text(@"שמור"), "שמור");
  EXPECT_EQ(@"שמור".length, 4u);
  EXPECT_EQ(text(@"😀"), "😀");
  EXPECT_EQ(@"😀".length, 2u);
  NSArray* none = @[];
  EXPECT_EQ(none.count, 0u);
  NSDictionary* empty = @{};
  EXPECT_EQ(empty.count, 0u);
  NSArray* two = @[ @1, @YES ];
  EXPECT_EQ(two.count, 2u);
}

TEST(Runtime, cxxExceptionsPassThroughMethods) {
  const Session session;
  bool isCaught = false;
  try {
    void (^block)(void) = ^{
      throw std::runtime_error("through");
    };
    [NSOperationQueue.mainQueue addOperationWithBlock:block];
    lexwend::doubles::time::advance(std::chrono::microseconds(0));
  } catch (const std::runtime_error&) {
    isCaught = true;
  }
  EXPECT_TRUE(isCaught);
}

TEST(Runtime, countsObjects) {
  Session session;
  CFTypeRef leaked = nullptr;
  @autoreleasepool {
    leaked = CFBridgingRetain([[Animal alloc] init]);
  }
  EXPECT_EQ(session.unbalancedObjects(), "Animal +1\n");
  CFRelease(leaked);
  EXPECT_EQ(session.unbalancedObjects(), "");
}

void overRelease() {
  CFTypeRef object = CFBridgingRetain([[Animal alloc] init]);
  CFRelease(object);
  lexwend::objc::release(static_cast<lexwend::objc::Object*>(const_cast<void*>(object)));
}
void messageToTheDead() {
  __unsafe_unretained Animal* dangling = nil;
  @autoreleasepool {
    Animal* animal = [[Animal alloc] init];
    dangling = animal;
  }
  [dangling greeting];
}
void unknownSelector() { [(id)[[Animal alloc] init] setStringValue:@""]; }
void readBeyondTheEnd() {
  NSMutableArray* array = [NSMutableArray array];
  [array addObject:@1];
  (void)[array objectAtIndex:1];
}

TEST(RuntimeDeath, endsTheProcessOnMisuse) {
  EXPECT_DEATH(overRelease(), "objc: over-release of an object of class Animal");
  EXPECT_DEATH(messageToTheDead(),
               "objc: message to a deallocated object of class Animal: greeting|objc: retain of");
  EXPECT_DEATH(unknownSelector(), "objc: unrecognized selector -\\[Animal setStringValue:\\]");
  EXPECT_DEATH(readBeyondTheEnd(), "macOS: -\\[NSArray objectAtIndex:\\] beyond the end");
}

}  // namespace
