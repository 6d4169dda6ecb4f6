// SPDX-License-Identifier: MIT
// Delayed and deferred work on the main queue.
#pragma once
#include <objc/objc.h>

#if defined(__OBJC__)
#import <Foundation/NSObject.h>
@protocol OS_dispatch_queue <NSObject>
@end
typedef NSObject<OS_dispatch_queue>* dispatch_queue_t;
#else
typedef struct dispatch_queue_s* dispatch_queue_t;
#endif

typedef void (^dispatch_block_t)(void);
typedef void (*dispatch_function_t)(void* _Nullable);
typedef uint64_t dispatch_time_t;
typedef intptr_t dispatch_once_t;

#define DISPATCH_TIME_NOW (0ull)
#define DISPATCH_TIME_FOREVER (~0ull)
#define NSEC_PER_SEC 1000000000ull
#define NSEC_PER_MSEC 1000000ull
#define USEC_PER_SEC 1000000ull
#define NSEC_PER_USEC 1000ull

LXW_SDK_EXTERN struct dispatch_queue_s _dispatch_main_q;

static inline __attribute__((always_inline)) dispatch_queue_t _Nonnull dispatch_get_main_queue(void) {
#if __has_feature(objc_arc)
  return (__bridge dispatch_queue_t)(void*)&_dispatch_main_q;
#else
  return (dispatch_queue_t)(void*)&_dispatch_main_q;
#endif
}

LXW_SDK_EXTERN dispatch_time_t dispatch_time(dispatch_time_t when, int64_t delta);
LXW_SDK_EXTERN void dispatch_after(dispatch_time_t when, dispatch_queue_t _Nonnull queue,
                                   dispatch_block_t _Nonnull block);
LXW_SDK_EXTERN void dispatch_async(dispatch_queue_t _Nonnull queue, dispatch_block_t _Nonnull block);
LXW_SDK_EXTERN void dispatch_after_f(dispatch_time_t when, dispatch_queue_t _Nonnull queue,
                                     void* _Nullable context, dispatch_function_t _Nonnull work);
LXW_SDK_EXTERN void dispatch_async_f(dispatch_queue_t _Nonnull queue, void* _Nullable context,
                                     dispatch_function_t _Nonnull work);
LXW_SDK_EXTERN void dispatch_once(dispatch_once_t* _Nonnull predicate,
                                  __attribute__((noescape)) dispatch_block_t _Nonnull block);
