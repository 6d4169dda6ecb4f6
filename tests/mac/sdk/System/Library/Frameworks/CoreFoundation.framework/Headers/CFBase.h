// SPDX-License-Identifier: MIT
// Base types, the two enumeration macros and the life of a Core Foundation object.
#pragma once
#include <TargetConditionals.h>
#include <objc/objc.h>
#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <sys/types.h>

#define CF_EXPORT LXW_SDK_EXTERN
// The Objective-C class that a Core Foundation type is interchangeable with; the compiler checks casts by it.
#define CF_BRIDGED_TYPE(T) __attribute__((objc_bridge(T)))
#define CF_RETURNS_RETAINED __attribute__((cf_returns_retained))

#define API_AVAILABLE_MACOS(version) __attribute__((availability(macos, introduced = version)))
#define API_DEPRECATED_MACOS(from, to) \
  __attribute__((availability(macos, introduced = from, deprecated = to)))

// A closed set is a type of its own; a set of bits is, in C++, the integer itself so that its values can be
// or-ed.
#define CF_ENUM(type, name) \
  enum name : type name;    \
  enum name : type
#ifdef __cplusplus
#define CF_OPTIONS(type, name) \
  type name;                   \
  enum : type
#else
#define CF_OPTIONS(type, name)                      \
  enum __attribute__((flag_enum)) name : type name; \
  enum __attribute__((flag_enum)) name : type
#endif

typedef unsigned char Boolean;
typedef uint8_t UInt8;
typedef uint16_t UInt16;
typedef int16_t SInt16;
typedef uint32_t UInt32;
typedef int32_t SInt32;
typedef uint64_t UInt64;
typedef int64_t SInt64;
typedef SInt32 OSStatus;
typedef UInt32 FourCharCode;
typedef FourCharCode OSType;
typedef UInt16 UniChar;
typedef unsigned long UniCharCount;
typedef unsigned long ItemCount;
typedef unsigned long ByteCount;
typedef UInt32 OptionBits;

enum { noErr = 0 };

typedef signed long CFIndex;
typedef unsigned long CFTypeID;
typedef unsigned long CFOptionFlags;
typedef double CFTimeInterval;
typedef double CFAbsoluteTime;

typedef const void* CFTypeRef;
typedef const struct CF_BRIDGED_TYPE(NSString) __CFString* CFStringRef;
typedef const struct __CFAllocator* CFAllocatorRef;
typedef const struct CF_BRIDGED_TYPE(NSArray) __CFArray* CFArrayRef;
typedef const struct CF_BRIDGED_TYPE(NSDictionary) __CFDictionary* CFDictionaryRef;
typedef const struct CF_BRIDGED_TYPE(NSData) __CFData* CFDataRef;
typedef const struct CF_BRIDGED_TYPE(NSNumber) __CFBoolean* CFBooleanRef;
typedef const struct CF_BRIDGED_TYPE(NSNumber) __CFNumber* CFNumberRef;
typedef struct __CFRunLoop* CFRunLoopRef;
typedef CFStringRef CFRunLoopMode;

typedef CF_ENUM(CFIndex, CFComparisonResult) {
  kCFCompareLessThan = -1L,
  kCFCompareEqualTo = 0,
  kCFCompareGreaterThan = 1,
};
typedef struct {
  CFIndex location;
  CFIndex length;
} CFRange;
static inline CFRange CFRangeMake(CFIndex location, CFIndex length) {
  CFRange range;
  range.location = location;
  range.length = length;
  return range;
}

CF_EXPORT const CFAllocatorRef _Null_unspecified kCFAllocatorDefault;
CF_EXPORT CFTypeID CFGetTypeID(CFTypeRef _Null_unspecified object);
CF_EXPORT CFTypeRef _Null_unspecified CFRetain(CFTypeRef _Null_unspecified object);
CF_EXPORT void CFRelease(CFTypeRef _Null_unspecified object);
CF_EXPORT CFTypeRef _Null_unspecified CFAutorelease(CFTypeRef _Null_unspecified object);
CF_EXPORT CFIndex CFGetRetainCount(CFTypeRef _Null_unspecified object);
CF_EXPORT Boolean CFEqual(CFTypeRef _Null_unspecified first, CFTypeRef _Null_unspecified second);
