// SPDX-License-Identifier: MIT
// The base types of Objective-C and the macros that every other declaration header builds on.
#pragma once
#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
#define LXW_SDK_EXTERN extern "C"
#else
#define LXW_SDK_EXTERN extern
#endif

#if __has_feature(objc_arc)
#define OBJC_ARC_UNAVAILABLE __attribute__((unavailable("not with automatic reference counting")))
#else
#define OBJC_ARC_UNAVAILABLE
#endif

typedef struct objc_class* Class;
struct objc_object {
  Class isa;
};
typedef struct objc_object* id;
typedef struct objc_selector* SEL;
typedef void (*IMP)(void);

// The width of BOOL is the processor's: a real bool on arm64, a signed char on x86-64.
#if __OBJC_BOOL_IS_BOOL
typedef bool BOOL;
#else
typedef signed char BOOL;
#endif

#if __has_feature(objc_bool)
#define YES __objc_yes
#define NO __objc_no
#else
#define YES ((BOOL)1)
#define NO ((BOOL)0)
#endif

#ifdef __cplusplus
#define Nil nullptr
#define nil nullptr
#else
#define Nil ((void*)0)
#define nil ((void*)0)
#endif

LXW_SDK_EXTERN SEL _Nonnull sel_registerName(const char* _Nonnull name);
LXW_SDK_EXTERN const char* _Nonnull sel_getName(SEL _Nonnull selector);
