// SPDX-License-Identifier: MIT
#pragma once
#include <Foundation/NSObject.h>

@class NSArray<ObjectType>, NSData, NSError, NSURL, NSLocale;

NS_ASSUME_NONNULL_BEGIN

typedef NSUInteger NSStringEncoding;
enum {
  NSASCIIStringEncoding = 1,
  NSUTF8StringEncoding = 4,
  NSUnicodeStringEncoding = 10,
  NSUTF16StringEncoding = NSUnicodeStringEncoding,
  NSUTF16LittleEndianStringEncoding = 0x94000100,
};
typedef NS_OPTIONS(NSUInteger, NSStringCompareOptions) {
  NSCaseInsensitiveSearch = 1,
  NSLiteralSearch = 2,
};

@interface NSString : NSObject <NSCopying, NSMutableCopying, NSSecureCoding>
@property(readonly) NSUInteger length;
- (unichar)characterAtIndex:(NSUInteger)index;
- (instancetype)init NS_DESIGNATED_INITIALIZER;
- (nullable instancetype)initWithCoder:(NSCoder*)coder NS_DESIGNATED_INITIALIZER;
+ (instancetype)string;
+ (instancetype)stringWithString:(NSString*)string;
+ (instancetype)stringWithFormat:(NSString*)format, ... NS_FORMAT_FUNCTION(1, 2);
+ (nullable instancetype)stringWithUTF8String:(const char*)utf8;
+ (instancetype)stringWithCharacters:(const unichar*)characters length:(NSUInteger)length;
+ (nullable instancetype)stringWithCString:(const char*)text encoding:(NSStringEncoding)encoding;
- (nullable instancetype)initWithUTF8String:(const char*)utf8;
- (nullable instancetype)initWithBytes:(const void*)bytes
                                length:(NSUInteger)length
                              encoding:(NSStringEncoding)encoding;
- (nullable instancetype)initWithData:(NSData*)data encoding:(NSStringEncoding)encoding;
- (instancetype)initWithCharacters:(const unichar*)characters length:(NSUInteger)length;
- (instancetype)initWithFormat:(NSString*)format, ... NS_FORMAT_FUNCTION(1, 2);
@property(nullable, readonly) const char* UTF8String __attribute__((objc_returns_inner_pointer));
- (void)getCharacters:(unichar*)buffer range:(NSRange)range;
- (NSUInteger)lengthOfBytesUsingEncoding:(NSStringEncoding)encoding;
- (nullable NSData*)dataUsingEncoding:(NSStringEncoding)encoding;
- (nullable NSData*)dataUsingEncoding:(NSStringEncoding)encoding allowLossyConversion:(BOOL)lossy;
- (BOOL)isEqualToString:(NSString*)string;
- (NSComparisonResult)compare:(NSString*)string;
- (BOOL)hasPrefix:(NSString*)prefix;
- (BOOL)hasSuffix:(NSString*)suffix;
- (BOOL)containsString:(NSString*)string;
- (NSString*)substringFromIndex:(NSUInteger)from;
- (NSString*)substringToIndex:(NSUInteger)to;
- (NSString*)stringByAppendingString:(NSString*)string;
- (NSString*)stringByAppendingFormat:(NSString*)format, ... NS_FORMAT_FUNCTION(1, 2);
- (NSString*)stringByAppendingPathComponent:(NSString*)component;
@property(readonly, copy) NSString* uppercaseString;
@property(readonly, copy) NSString* lowercaseString;
@property(readonly, copy) NSString* lastPathComponent;
@property(readonly) NSInteger integerValue;
@property(readonly) const char* fileSystemRepresentation __attribute__((objc_returns_inner_pointer));
@end

@interface NSMutableString : NSString
- (void)appendString:(NSString*)string;
@end

// What the compiler builds for a literal.
@interface NSSimpleCString : NSString
@end
@interface NSConstantString : NSSimpleCString
@end

NS_ASSUME_NONNULL_END
