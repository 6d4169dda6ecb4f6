// SPDX-License-Identifier: MIT
#pragma once
#include <Foundation/NSObjCRuntime.h>

@class NSString, NSCoder, Protocol;

NS_ASSUME_NONNULL_BEGIN

@protocol NSObject
- (BOOL)isEqual:(nullable id)object;
@property(readonly) NSUInteger hash;
@property(readonly, nullable) Class superclass;
- (Class)class;
- (instancetype)self;
- (null_unspecified id)performSelector:(SEL)selector;
- (null_unspecified id)performSelector:(SEL)selector withObject:(nullable id)object;
- (BOOL)isKindOfClass:(Class)cls;
- (BOOL)isMemberOfClass:(Class)cls;
- (BOOL)conformsToProtocol:(Protocol*)protocol;
- (BOOL)respondsToSelector:(SEL)selector;
- (instancetype)retain OBJC_ARC_UNAVAILABLE;
- (oneway void)release OBJC_ARC_UNAVAILABLE;
- (instancetype)autorelease OBJC_ARC_UNAVAILABLE;
- (NSUInteger)retainCount OBJC_ARC_UNAVAILABLE;
@property(readonly, copy) NSString* description;
@end

// The root class holds its isa itself: the compiler needs it to lay out what is derived from it.
__attribute__((objc_root_class))
@interface NSObject<NSObject> {
  Class isa;
}
- (instancetype)init NS_DESIGNATED_INITIALIZER;
+ (instancetype)new;
+ (instancetype)alloc;
- (void)dealloc;
- (id)copy;
- (id)mutableCopy;
+ (nullable Class)superclass;
+ (Class)class;
+ (BOOL)instancesRespondToSelector:(SEL)selector;
+ (NSString*)description;
@end

@protocol NSCopying
- (id)copyWithZone:(nullable struct _NSZone*)zone;
@end
@protocol NSMutableCopying
- (id)mutableCopyWithZone:(nullable struct _NSZone*)zone;
@end
@protocol NSCoding
- (void)encodeWithCoder:(NSCoder*)coder;
- (nullable instancetype)initWithCoder:(NSCoder*)coder;
@end
@protocol NSSecureCoding <NSCoding>
@property(class, readonly) BOOL supportsSecureCoding;
@end

@interface NSCoder : NSObject
@end

NS_ASSUME_NONNULL_END

FOUNDATION_EXPORT NSString* _Nonnull NSStringFromClass(Class _Nonnull cls);
FOUNDATION_EXPORT NSString* _Nonnull NSStringFromSelector(SEL _Nonnull selector);
FOUNDATION_EXPORT Class _Nullable NSClassFromString(NSString* _Nonnull name);
FOUNDATION_EXPORT SEL _Nonnull NSSelectorFromString(NSString* _Nonnull name);
FOUNDATION_EXPORT void NSLog(NSString* _Nonnull format, ...) NS_FORMAT_FUNCTION(1, 2);

#if __has_feature(objc_arc)
static inline CF_RETURNS_RETAINED CFTypeRef _Nullable CFBridgingRetain(id _Nullable object) {
  return (__bridge_retained CFTypeRef)object;
}
static inline id _Nullable CFBridgingRelease(CFTypeRef __attribute__((cf_consumed)) _Nullable object) {
  return (__bridge_transfer id)object;
}
#endif
