// SPDX-License-Identifier: MIT
#pragma once
#include <CoreFoundation/CFBase.h>

typedef UInt32 CFStringEncoding;
typedef CF_ENUM(CFStringEncoding, CFStringBuiltInEncodings) {
  kCFStringEncodingASCII = 0x0600,
  kCFStringEncodingUTF8 = 0x08000100,
  kCFStringEncodingUTF16 = 0x0100,
  kCFStringEncodingUTF16LE = 0x14000100,
};
typedef CF_OPTIONS(CFOptionFlags, CFStringCompareFlags) {
  kCFCompareCaseInsensitive = 1,
  kCFCompareNonliteral = 16,
};
enum { kCFStringEncodingInvalidId = 0xffffffffU };

#define CFSTR(text) ((CFStringRef)__builtin___CFStringMakeConstantString("" text ""))

CF_EXPORT CFTypeID CFStringGetTypeID(void);
CF_EXPORT CFStringRef _Null_unspecified CFStringCreateWithCString(CFAllocatorRef _Null_unspecified allocator,
                                                                  const char* _Null_unspecified text,
                                                                  CFStringEncoding encoding);
CF_EXPORT CFStringRef _Null_unspecified CFStringCreateWithBytes(CFAllocatorRef _Null_unspecified allocator,
                                                                const UInt8* _Null_unspecified bytes,
                                                                CFIndex count, CFStringEncoding encoding,
                                                                Boolean isExternalRepresentation);
CF_EXPORT CFStringRef _Null_unspecified CFStringCreateWithCharacters(
    CFAllocatorRef _Null_unspecified allocator, const UniChar* _Null_unspecified characters, CFIndex count);
CF_EXPORT CFIndex CFStringGetLength(CFStringRef _Null_unspecified string);
CF_EXPORT void CFStringGetCharacters(CFStringRef _Null_unspecified string, CFRange range,
                                     UniChar* _Null_unspecified buffer);
CF_EXPORT const UniChar* _Null_unspecified CFStringGetCharactersPtr(CFStringRef _Null_unspecified string);
CF_EXPORT const char* _Null_unspecified CFStringGetCStringPtr(CFStringRef _Null_unspecified string,
                                                              CFStringEncoding encoding);
CF_EXPORT Boolean CFStringGetCString(CFStringRef _Null_unspecified string, char* _Null_unspecified buffer,
                                     CFIndex bufferSize, CFStringEncoding encoding);
CF_EXPORT CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding);
CF_EXPORT CFIndex CFStringGetBytes(CFStringRef _Null_unspecified string, CFRange range,
                                   CFStringEncoding encoding, UInt8 lossByte,
                                   Boolean isExternalRepresentation, UInt8* _Null_unspecified buffer,
                                   CFIndex maxBufferLength, CFIndex* _Null_unspecified usedBufferLength);
CF_EXPORT CFComparisonResult CFStringCompare(CFStringRef _Null_unspecified first,
                                             CFStringRef _Null_unspecified second,
                                             CFStringCompareFlags options);
