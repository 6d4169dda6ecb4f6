// SPDX-License-Identifier: MIT
#pragma once
#include <Foundation/Foundation.h>

NS_ASSUME_NONNULL_BEGIN

typedef NS_ENUM(NSUInteger, NSEventType) {
  NSEventTypeKeyDown = 10,
  NSEventTypeKeyUp = 11,
  NSEventTypeFlagsChanged = 12,
  NSEventTypeApplicationDefined = 15,
};
typedef NS_OPTIONS(unsigned long long, NSEventMask) {
  NSEventMaskKeyDown = 1ULL << NSEventTypeKeyDown,
  NSEventMaskKeyUp = 1ULL << NSEventTypeKeyUp,
  NSEventMaskFlagsChanged = 1ULL << NSEventTypeFlagsChanged,
  NSEventMaskApplicationDefined = 1ULL << NSEventTypeApplicationDefined,
  NSEventMaskAny = 0xFFFFFFFFFFFFFFFFULL,
};
typedef NS_OPTIONS(NSUInteger, NSEventModifierFlags) {
  NSEventModifierFlagCapsLock = 1 << 16,
  NSEventModifierFlagShift = 1 << 17,
  NSEventModifierFlagControl = 1 << 18,
  NSEventModifierFlagOption = 1 << 19,
  NSEventModifierFlagCommand = 1 << 20,
  NSEventModifierFlagNumericPad = 1 << 21,
  NSEventModifierFlagHelp = 1 << 22,
  NSEventModifierFlagFunction = 1 << 23,
  NSEventModifierFlagDeviceIndependentFlagsMask = 0xffff0000UL,
};

@class NSGraphicsContext;
@interface NSEvent : NSObject <NSCopying, NSCoding>
@property(readonly) NSEventType type;
@property(readonly) NSEventModifierFlags modifierFlags;
@property(readonly) unsigned short keyCode;
@property(nullable, readonly, copy) NSString* characters;
@property(nullable, readonly, copy) NSString* charactersIgnoringModifiers;
@property(readonly, getter=isARepeat) BOOL ARepeat;
+ (nullable NSEvent*)keyEventWithType:(NSEventType)type
                             location:(NSPoint)location
                        modifierFlags:(NSEventModifierFlags)flags
                            timestamp:(NSTimeInterval)time
                         windowNumber:(NSInteger)windowNumber
                              context:(nullable NSGraphicsContext*)context
                           characters:(NSString*)characters
          charactersIgnoringModifiers:(NSString*)charactersIgnoringModifiers
                            isARepeat:(BOOL)isARepeat
                              keyCode:(unsigned short)keyCode;
+ (nullable NSEvent*)otherEventWithType:(NSEventType)type
                               location:(NSPoint)location
                          modifierFlags:(NSEventModifierFlags)flags
                              timestamp:(NSTimeInterval)time
                           windowNumber:(NSInteger)windowNumber
                                context:(nullable NSGraphicsContext*)context
                                subtype:(short)subtype
                                  data1:(NSInteger)data1
                                  data2:(NSInteger)data2;
+ (nullable id)addLocalMonitorForEventsMatchingMask:(NSEventMask)mask
                                            handler:(NSEvent* _Nullable (^)(NSEvent* event))block;
+ (nullable id)addGlobalMonitorForEventsMatchingMask:(NSEventMask)mask
                                             handler:(void (^)(NSEvent* event))block;
+ (void)removeMonitor:(id)monitor;
@end

NS_ASSUME_NONNULL_END
