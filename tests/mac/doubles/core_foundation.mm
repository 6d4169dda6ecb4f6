// SPDX-License-Identifier: MIT
// Core Foundation: its types are the Objective-C objects themselves. Each function refuses an object of
// another type, where the real one would read memory it should not.
#include <algorithm>
#include <cstring>

#include "tests/mac/doubles/support.h"
#include "tests/mac/doubles/system_objects.h"
#include "tests/mac/runtime/runtime.h"

using namespace lexwend;
using namespace lexwend::doubles;

namespace {

// Any distinct numbers do; a program compares them only with each other.
enum : CFTypeID {
  kNullType = 16,
  kStringType = 7,
  kDictionaryType = 18,
  kArrayType = 19,
  kDataType = 20,
  kBooleanType = 21,
  kNumberType = 22,
  kUrlType = 29,
  kErrorType = 27,
  kElementType = 301,
  kInputSourceType = 302,
  kEventType = 303,
  kEventSourceType = 304,
  kColorType = 305,
};

NSString* asString(CFStringRef string, const char* what) {
  requireKind(string, [NSString class], what);
  return (NSString*)string;
}

}  // namespace

extern "C" {

const CFAllocatorRef kCFAllocatorDefault = nullptr;
struct CFArrayCallBacks {
  int unused;
};
struct CFDictionaryKeyCallBacks {
  int unused;
};
struct CFDictionaryValueCallBacks {
  int unused;
};
const CFArrayCallBacks kCFTypeArrayCallBacks = {0};
const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks = {0};
const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks = {0};

CFTypeRef CFRetain(CFTypeRef object) {
  requireNonnull(object);
  return [(id)object retain];
}
void CFRelease(CFTypeRef object) {
  requireNonnull(object);
  [(id)object release];
}
CFTypeRef CFAutorelease(CFTypeRef object) {
  requireNonnull(object);
  return [(id)object autorelease];
}
CFIndex CFGetRetainCount(CFTypeRef object) { return (CFIndex)[(id)object retainCount]; }
Boolean CFEqual(CFTypeRef first, CFTypeRef second) {
  requireNonnull(first);
  requireNonnull(second);
  return [(id)first isEqual:(id)second];
}

CFTypeID CFGetTypeID(CFTypeRef object) {
  requireNonnull(object);
  const id candidate = (id)object;
  if (object == kCFBooleanTrue || object == kCFBooleanFalse) return kBooleanType;
  if ([candidate isKindOfClass:[NSString class]]) return kStringType;
  if ([candidate isKindOfClass:[NSArray class]]) return kArrayType;
  if ([candidate isKindOfClass:[NSDictionary class]]) return kDictionaryType;
  if ([candidate isKindOfClass:[NSData class]]) return kDataType;
  if ([candidate isKindOfClass:[NSNumber class]]) return kNumberType;
  if ([candidate isKindOfClass:[NSNull class]]) return kNullType;
  if ([candidate isKindOfClass:[NSURL class]]) return kUrlType;
  if ([candidate isKindOfClass:[NSError class]]) return kErrorType;
  if ([candidate isKindOfClass:[LXWAccessibilityElement class]]) return kElementType;
  if ([candidate isKindOfClass:[LXWInputSource class]]) return kInputSourceType;
  if ([candidate isKindOfClass:[LXWKeyEvent class]]) return kEventType;
  if ([candidate isKindOfClass:[LXWEventSource class]]) return kEventSourceType;
  if ([candidate isKindOfClass:[LXWColorValue class]]) return kColorType;
  die("CFGetTypeID of an object that is no Core Foundation type: " + utf8([candidate description]));
}
CFTypeID CFStringGetTypeID() { return kStringType; }
CFTypeID CFArrayGetTypeID() { return kArrayType; }
CFTypeID CFDictionaryGetTypeID() { return kDictionaryType; }
CFTypeID CFDataGetTypeID() { return kDataType; }
CFTypeID CFBooleanGetTypeID() { return kBooleanType; }
CFTypeID CFNumberGetTypeID() { return kNumberType; }
CFTypeID AXUIElementGetTypeID() { return kElementType; }
CFTypeID TISInputSourceGetTypeID() { return kInputSourceType; }
CFTypeID CGEventGetTypeID() { return kEventType; }
CFTypeID CGEventSourceGetTypeID() { return kEventSourceType; }
CFTypeID CGColorGetTypeID() { return kColorType; }

// Strings

static NSStringEncoding encodingOf(CFStringEncoding encoding) {
  switch (encoding) {
    case kCFStringEncodingUTF8:
      return NSUTF8StringEncoding;
    case kCFStringEncodingASCII:
      return NSASCIIStringEncoding;
    case kCFStringEncodingUTF16:
    case kCFStringEncodingUTF16LE:
      return NSUTF16LittleEndianStringEncoding;
    default:
      die("a string encoding that the doubles do not know");
  }
}
CFStringRef CFStringCreateWithCString(CFAllocatorRef, const char* text, CFStringEncoding encoding) {
  requireNonnull(text);
  return (CFStringRef)[[NSString alloc] initWithBytes:text
                                               length:std::strlen(text)
                                             encoding:encodingOf(encoding)];
}
CFStringRef CFStringCreateWithBytes(CFAllocatorRef, const UInt8* bytes, CFIndex count,
                                    CFStringEncoding encoding, Boolean isExternal) {
  constexpr UInt8 kByteOrderMark[] = {0xEF, 0xBB, 0xBF};
  if (isExternal && count >= 3 && std::memcmp(bytes, kByteOrderMark, 3) == 0) {
    bytes += 3;
    count -= 3;
  }
  return (CFStringRef)[[NSString alloc] initWithBytes:bytes
                                               length:(NSUInteger)count
                                             encoding:encodingOf(encoding)];
}
CFStringRef CFStringCreateWithCharacters(CFAllocatorRef, const UniChar* characters, CFIndex count) {
  return (CFStringRef)[[NSString alloc] initWithCharacters:characters length:(NSUInteger)count];
}
CFIndex CFStringGetLength(CFStringRef string) {
  return (CFIndex)asString(string, "CFStringGetLength").length;
}
void CFStringGetCharacters(CFStringRef string, CFRange range, UniChar* buffer) {
  [asString(string, "CFStringGetCharacters")
      getCharacters:buffer
              range:NSMakeRange((NSUInteger)range.location, (NSUInteger)range.length)];
}
// A program must be ready for a string that does not offer its inner storage.
const UniChar* CFStringGetCharactersPtr(CFStringRef string) {
  asString(string, "CFStringGetCharactersPtr");
  return nullptr;
}
const char* CFStringGetCStringPtr(CFStringRef string, CFStringEncoding) {
  asString(string, "CFStringGetCStringPtr");
  return nullptr;
}
Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex bufferSize, CFStringEncoding encoding) {
  NSData* data = [asString(string, "CFStringGetCString") dataUsingEncoding:encodingOf(encoding)];
  if (data == nil || (CFIndex)data.length + 1 > bufferSize) return false;
  if (data.length > 0) std::memcpy(buffer, data.bytes, data.length);
  buffer[data.length] = 0;
  return true;
}
CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding) {
  constexpr CFIndex kMostUtf8BytesOfOneUnit = 3;
  return encoding == kCFStringEncodingUTF8 ? length * kMostUtf8BytesOfOneUnit : length * 2;
}
CFIndex CFStringGetBytes(CFStringRef string, CFRange range, CFStringEncoding encoding, UInt8 lossByte,
                         Boolean, UInt8* buffer, CFIndex maxBufferLength, CFIndex* usedBufferLength) {
  const std::u16string units = unitsOf(asString(string, "CFStringGetBytes"));
  NSString* part = stringOfUnits(units.substr((std::size_t)range.location, (std::size_t)range.length));
  NSData* data = [part dataUsingEncoding:encodingOf(encoding) allowLossyConversion:lossByte != 0];
  if (data == nil) die("CFStringGetBytes: part of a string that cannot be converted is not offered");
  if (buffer != nullptr && (CFIndex)data.length > maxBufferLength) {
    die("CFStringGetBytes: conversion of a part of a string is not offered");
  }
  if (buffer != nullptr && data.length > 0) std::memcpy(buffer, data.bytes, data.length);
  if (usedBufferLength != nullptr) *usedBufferLength = (CFIndex)data.length;
  return range.length;
}
CFComparisonResult CFStringCompare(CFStringRef first, CFStringRef second, CFStringCompareFlags options) {
  if (options != 0) die("CFStringCompare: only plain comparison is offered");
  return (CFComparisonResult)[asString(first, "CFStringCompare") compare:asString(second, "CFStringCompare")];
}

// Arrays and dictionaries

CFArrayRef CFArrayCreate(CFAllocatorRef, const void** values, CFIndex count,
                         const CFArrayCallBacks* callBacks) {
  if (callBacks != &kCFTypeArrayCallBacks) die("CFArrayCreate: only arrays of objects are offered");
  return (CFArrayRef)[[NSArray alloc] initWithObjects:(const id*)values count:(NSUInteger)count];
}
CFIndex CFArrayGetCount(CFArrayRef array) {
  requireKind(array, [NSArray class]);
  return (CFIndex)((NSArray*)array).count;
}
const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index) {
  requireKind(array, [NSArray class]);
  return (const void*)[(NSArray*)array objectAtIndex:(NSUInteger)index];
}
CFDictionaryRef CFDictionaryCreate(CFAllocatorRef, const void** keys, const void** values, CFIndex count,
                                   const CFDictionaryKeyCallBacks* keyCallBacks,
                                   const CFDictionaryValueCallBacks* valueCallBacks) {
  if (keyCallBacks != &kCFTypeDictionaryKeyCallBacks || valueCallBacks != &kCFTypeDictionaryValueCallBacks) {
    die("CFDictionaryCreate: only dictionaries of objects are offered");
  }
  return (CFDictionaryRef)[[NSDictionary dictionaryWithObjects:(const id*)values
                                                       forKeys:(const id*)keys
                                                         count:(NSUInteger)count] retain];
}
CFIndex CFDictionaryGetCount(CFDictionaryRef dictionary) {
  requireKind(dictionary, [NSDictionary class]);
  return (CFIndex)((NSDictionary*)dictionary).count;
}
const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key) {
  requireKind(dictionary, [NSDictionary class]);
  return (const void*)[(NSDictionary*)dictionary objectForKey:(id)key];
}

// Data, truth values and numbers

CFDataRef CFDataCreate(CFAllocatorRef, const UInt8* bytes, CFIndex length) {
  return (CFDataRef)[[NSData alloc] initWithBytes:bytes length:(NSUInteger)length];
}
const UInt8* CFDataGetBytePtr(CFDataRef data) {
  requireKind(data, [NSData class]);
  // Not null for data without bytes: a program has to ask for the length.
  static const UInt8 kNoBytes[16] = {};
  const void* bytes = ((NSData*)data).bytes;
  return bytes == nullptr ? kNoBytes : (const UInt8*)bytes;
}
CFIndex CFDataGetLength(CFDataRef data) {
  requireKind(data, [NSData class]);
  return (CFIndex)((NSData*)data).length;
}
Boolean CFBooleanGetValue(CFBooleanRef boolean) {
  requireNonnull(boolean);
  if (boolean != kCFBooleanTrue && boolean != kCFBooleanFalse) die("CFBooleanGetValue: wrong type");
  return boolean == kCFBooleanTrue;
}
Boolean CFNumberIsFloatType(CFNumberRef number) {
  requireKind(number, [NSNumber class]);
  const char type = *((NSNumber*)number).objCType;
  return type == 'f' || type == 'd';
}
CFNumberType CFNumberGetType(CFNumberRef number) {
  requireKind(number, [NSNumber class]);
  switch (*((NSNumber*)number).objCType) {
    case 'f':
      return kCFNumberFloat32Type;
    case 'd':
      return kCFNumberFloat64Type;
    case 'c':
      return kCFNumberCharType;
    case 'i':
      return kCFNumberSInt32Type;
    default:
      return kCFNumberSInt64Type;
  }
}
Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value) {
  requireKind(number, [NSNumber class]);
  NSNumber* source = (NSNumber*)number;
  // As loosely as by a comparison of doubles: 2 to the power of 63 passes for the largest integer.
  const bool isWhole = source.doubleValue == (double)source.longLongValue;
  switch (type) {
    case kCFNumberSInt32Type:
    case kCFNumberIntType:
      *(std::int32_t*)value = source.intValue;
      return isWhole && source.longLongValue == source.intValue;
    case kCFNumberSInt64Type:
    case kCFNumberLongType:
    case kCFNumberLongLongType:
    case kCFNumberCFIndexType:
    case kCFNumberNSIntegerType:
      *(std::int64_t*)value = source.longLongValue;
      return isWhole;
    case kCFNumberFloat64Type:
    case kCFNumberDoubleType:
    case kCFNumberCGFloatType:
      *(double*)value = source.doubleValue;
      return true;
    default:
      die("CFNumberGetValue: a number type that the doubles do not know");
  }
}

CGColorRef CGColorRetain(CGColorRef color) { return (CGColorRef)[(id)color retain]; }
void CGColorRelease(CGColorRef color) { [(id)color release]; }
}
