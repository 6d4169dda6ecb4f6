// SPDX-License-Identifier: MIT
// Arrays, dictionaries, data, numbers and truth values.
#pragma once
#include <CoreFoundation/CFBase.h>

typedef struct CFArrayCallBacks CFArrayCallBacks;
typedef struct CFDictionaryKeyCallBacks CFDictionaryKeyCallBacks;
typedef struct CFDictionaryValueCallBacks CFDictionaryValueCallBacks;
CF_EXPORT const CFArrayCallBacks kCFTypeArrayCallBacks;
CF_EXPORT const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks;
CF_EXPORT const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks;

CF_EXPORT CFTypeID CFArrayGetTypeID(void);
CF_EXPORT CFArrayRef _Null_unspecified CFArrayCreate(CFAllocatorRef _Null_unspecified allocator,
                                                     const void* _Null_unspecified* _Null_unspecified values,
                                                     CFIndex count,
                                                     const CFArrayCallBacks* _Null_unspecified callBacks);
CF_EXPORT CFIndex CFArrayGetCount(CFArrayRef _Null_unspecified array);
CF_EXPORT const void* _Null_unspecified CFArrayGetValueAtIndex(CFArrayRef _Null_unspecified array,
                                                               CFIndex index);

CF_EXPORT CFTypeID CFDictionaryGetTypeID(void);
CF_EXPORT CFDictionaryRef _Null_unspecified CFDictionaryCreate(
    CFAllocatorRef _Null_unspecified allocator, const void* _Null_unspecified* _Null_unspecified keys,
    const void* _Null_unspecified* _Null_unspecified values, CFIndex count,
    const CFDictionaryKeyCallBacks* _Null_unspecified keyCallBacks,
    const CFDictionaryValueCallBacks* _Null_unspecified valueCallBacks);
CF_EXPORT CFIndex CFDictionaryGetCount(CFDictionaryRef _Null_unspecified dictionary);
CF_EXPORT const void* _Null_unspecified CFDictionaryGetValue(CFDictionaryRef _Null_unspecified dictionary,
                                                             const void* _Null_unspecified key);

CF_EXPORT CFTypeID CFDataGetTypeID(void);
CF_EXPORT CFDataRef _Null_unspecified CFDataCreate(CFAllocatorRef _Null_unspecified allocator,
                                                   const UInt8* _Null_unspecified bytes, CFIndex length);
CF_EXPORT const UInt8* _Null_unspecified CFDataGetBytePtr(CFDataRef _Null_unspecified data);
CF_EXPORT CFIndex CFDataGetLength(CFDataRef _Null_unspecified data);

CF_EXPORT const CFBooleanRef _Null_unspecified kCFBooleanTrue;
CF_EXPORT const CFBooleanRef _Null_unspecified kCFBooleanFalse;
CF_EXPORT CFTypeID CFBooleanGetTypeID(void);
CF_EXPORT Boolean CFBooleanGetValue(CFBooleanRef _Null_unspecified boolean);

typedef CF_ENUM(CFIndex, CFNumberType) {
  kCFNumberSInt8Type = 1,
  kCFNumberSInt16Type = 2,
  kCFNumberSInt32Type = 3,
  kCFNumberSInt64Type = 4,
  kCFNumberFloat32Type = 5,
  kCFNumberFloat64Type = 6,
  kCFNumberCharType = 7,
  kCFNumberShortType = 8,
  kCFNumberIntType = 9,
  kCFNumberLongType = 10,
  kCFNumberLongLongType = 11,
  kCFNumberFloatType = 12,
  kCFNumberDoubleType = 13,
  kCFNumberCFIndexType = 14,
  kCFNumberNSIntegerType = 15,
  kCFNumberCGFloatType = 16,
};
CF_EXPORT CFTypeID CFNumberGetTypeID(void);
CF_EXPORT CFNumberType CFNumberGetType(CFNumberRef _Null_unspecified number);
CF_EXPORT Boolean CFNumberGetValue(CFNumberRef _Null_unspecified number, CFNumberType type,
                                   void* _Null_unspecified value);
CF_EXPORT Boolean CFNumberIsFloatType(CFNumberRef _Null_unspecified number);
