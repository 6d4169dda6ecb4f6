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
CFIndex CFStringGetLength(CFStringRef string) {
  return (CFIndex)asString(string, "CFStringGetLength").length;
}
void CFStringGetCharacters(CFStringRef string, CFRange range, UniChar* buffer) {
  [asString(string, "CFStringGetCharacters")
      getCharacters:buffer
              range:NSMakeRange((NSUInteger)range.location, (NSUInteger)range.length)];
}

// Arrays and dictionaries

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

// Data, truth values and numbers

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
