// SPDX-License-Identifier: MIT
#pragma once
#include <CoreFoundation/CFBase.h>

typedef CF_ENUM(SInt32, CFRunLoopRunResult) {
  kCFRunLoopRunFinished = 1,
  kCFRunLoopRunStopped = 2,
  kCFRunLoopRunTimedOut = 3,
  kCFRunLoopRunHandledSource = 4,
};
CF_EXPORT const CFRunLoopMode _Null_unspecified kCFRunLoopDefaultMode;
CF_EXPORT const CFRunLoopMode _Null_unspecified kCFRunLoopCommonModes;
CF_EXPORT CFRunLoopRef _Null_unspecified CFRunLoopGetMain(void);
CF_EXPORT CFRunLoopRef _Null_unspecified CFRunLoopGetCurrent(void);
CF_EXPORT CFRunLoopRunResult CFRunLoopRunInMode(CFRunLoopMode _Null_unspecified mode, CFTimeInterval seconds,
                                                Boolean returnAfterSourceHandled);
CF_EXPORT void CFRunLoopRun(void);
CF_EXPORT void CFRunLoopPerformBlock(CFRunLoopRef _Null_unspecified runLoop, CFTypeRef _Null_unspecified mode,
                                     void (^_Null_unspecified block)(void));
CF_EXPORT void CFRunLoopWakeUp(CFRunLoopRef _Null_unspecified runLoop);
CF_EXPORT void CFRunLoopStop(CFRunLoopRef _Null_unspecified runLoop);
CF_EXPORT CFAbsoluteTime CFAbsoluteTimeGetCurrent(void);
