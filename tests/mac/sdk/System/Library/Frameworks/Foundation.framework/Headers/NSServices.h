// SPDX-License-Identifier: MIT
// Errors, URLs, files, defaults, dates, notifications, timers, the bundle and the process.
#pragma once
#include <Foundation/NSCollections.h>
#include <Foundation/NSString.h>

NS_ASSUME_NONNULL_BEGIN

typedef NSString* NSErrorDomain;
typedef NSString* NSErrorUserInfoKey;
FOUNDATION_EXPORT NSErrorDomain const NSCocoaErrorDomain;
FOUNDATION_EXPORT NSErrorDomain const NSPOSIXErrorDomain;
FOUNDATION_EXPORT NSErrorDomain const NSOSStatusErrorDomain;
FOUNDATION_EXPORT NSErrorUserInfoKey const NSLocalizedDescriptionKey;
@interface NSError : NSObject <NSCopying, NSSecureCoding>
+ (instancetype)errorWithDomain:(NSErrorDomain)domain
                           code:(NSInteger)code
                       userInfo:(nullable NSDictionary<NSErrorUserInfoKey, id>*)userInfo;
@property(readonly, copy) NSErrorDomain domain;
@property(readonly) NSInteger code;
@property(readonly, copy) NSDictionary<NSErrorUserInfoKey, id>* userInfo;
@property(readonly, copy) NSString* localizedDescription;
@end

@interface NSURL : NSObject <NSSecureCoding, NSCopying>
+ (nullable instancetype)URLWithString:(NSString*)string;
+ (NSURL*)fileURLWithPath:(NSString*)path;
+ (NSURL*)fileURLWithPath:(NSString*)path isDirectory:(BOOL)isDirectory;
- (nullable NSURL*)URLByAppendingPathComponent:(NSString*)component;
@property(nullable, readonly, copy) NSString* absoluteString;
@property(nullable, readonly, copy) NSString* path;
@property(nullable, readonly, copy) NSString* scheme;
@property(readonly, getter=isFileURL) BOOL fileURL;
@end

@interface NSFileManager : NSObject
@property(class, readonly, strong) NSFileManager* defaultManager;
@property(readonly, copy) NSURL* homeDirectoryForCurrentUser API_AVAILABLE_MACOS(10.12);
- (BOOL)fileExistsAtPath:(NSString*)path;
@end
FOUNDATION_EXPORT NSString* NSHomeDirectory(void);

@interface NSFileHandle : NSObject <NSSecureCoding>
+ (nullable instancetype)fileHandleForWritingToURL:(NSURL*)url error:(NSError* _Nullable* _Nullable)error;
+ (nullable instancetype)fileHandleForUpdatingURL:(NSURL*)url error:(NSError* _Nullable* _Nullable)error;
- (unsigned long long)seekToEndOfFile;
- (void)writeData:(NSData*)data;
- (void)closeFile;
- (BOOL)seekToEndReturningOffset:(unsigned long long* _Nullable)offset
                           error:(NSError* _Nullable* _Nullable)error API_AVAILABLE_MACOS(10.15);
- (BOOL)writeData:(NSData*)data error:(NSError* _Nullable* _Nullable)error API_AVAILABLE_MACOS(10.15);
- (BOOL)closeAndReturnError:(NSError* _Nullable* _Nullable)error API_AVAILABLE_MACOS(10.15);
- (BOOL)synchronizeAndReturnError:(NSError* _Nullable* _Nullable)error API_AVAILABLE_MACOS(10.15);
@end

@interface NSUserDefaults : NSObject
@property(class, readonly, strong) NSUserDefaults* standardUserDefaults;
- (nullable id)objectForKey:(NSString*)key;
- (void)setObject:(nullable id)value forKey:(NSString*)key;
- (void)removeObjectForKey:(NSString*)key;
- (nullable NSString*)stringForKey:(NSString*)key;
- (NSInteger)integerForKey:(NSString*)key;
- (BOOL)boolForKey:(NSString*)key;
- (void)setInteger:(NSInteger)value forKey:(NSString*)key;
- (void)setBool:(BOOL)value forKey:(NSString*)key;
- (BOOL)synchronize;
@end

@interface NSDate : NSObject <NSCopying, NSSecureCoding>
+ (instancetype)date;
+ (instancetype)dateWithTimeIntervalSince1970:(NSTimeInterval)seconds;
+ (instancetype)dateWithTimeIntervalSinceNow:(NSTimeInterval)seconds;
@property(class, readonly, copy) NSDate* distantFuture;
@property(class, readonly, copy) NSDate* distantPast;
@property(readonly) NSTimeInterval timeIntervalSince1970;
@property(readonly) NSTimeInterval timeIntervalSinceNow;
@end

@interface NSLocale : NSObject <NSCopying, NSSecureCoding>
+ (instancetype)localeWithLocaleIdentifier:(NSString*)identifier;
@property(readonly, copy) NSString* localeIdentifier;
@end
@interface NSTimeZone : NSObject <NSCopying, NSSecureCoding>
+ (nullable instancetype)timeZoneWithName:(NSString*)name;
@property(readonly, copy) NSString* name;
@end
@interface NSFormatter : NSObject <NSCopying, NSCoding>
@end
@interface NSDateFormatter : NSFormatter
@property(null_resettable, copy) NSString* dateFormat;
@property(null_resettable, copy) NSLocale* locale;
@property(null_resettable, copy) NSTimeZone* timeZone;
- (NSString*)stringFromDate:(NSDate*)date;
@end

@interface NSBundle : NSObject
@property(class, readonly, strong) NSBundle* mainBundle;
@property(nullable, readonly, copy) NSString* bundleIdentifier;
@property(nullable, readonly, copy) NSDictionary<NSString*, id>* infoDictionary;
@property(readonly, copy) NSString* bundlePath;
- (nullable id)objectForInfoDictionaryKey:(NSString*)key;
@end

@interface NSProcessInfo : NSObject
@property(class, readonly, strong) NSProcessInfo* processInfo;
@property(readonly, copy) NSArray<NSString*>* arguments;
@property(readonly, copy) NSDictionary<NSString*, NSString*>* environment;
@property(readonly) int processIdentifier;
@property(copy) NSString* processName;
@end
typedef NS_OPTIONS(uint64_t, NSActivityOptions) {
  NSActivityIdleSystemSleepDisabled = 1ULL << 20,
  NSActivityUserInitiated = 0x00FFFFFFULL | NSActivityIdleSystemSleepDisabled,
  NSActivityUserInitiatedAllowingIdleSystemSleep = NSActivityUserInitiated &
                                                   ~(uint64_t)NSActivityIdleSystemSleepDisabled,
  NSActivityBackground = 0x000000FFULL,
};
@interface NSProcessInfo (NSProcessInfoActivity)
- (id<NSObject>)beginActivityWithOptions:(NSActivityOptions)options
                                  reason:(NSString*)reason API_AVAILABLE_MACOS(10.9);
- (void)endActivity:(id<NSObject>)activity API_AVAILABLE_MACOS(10.9);
@end

@interface NSThread : NSObject
@property(class, readonly) BOOL isMainThread;
@end

@interface NSOperationQueue : NSObject
@property(class, readonly, strong) NSOperationQueue* mainQueue;
@property(class, readonly, strong, nullable) NSOperationQueue* currentQueue;
- (void)addOperationWithBlock:(void (^)(void))block;
@end

typedef NSString* NSNotificationName;
@interface NSNotification : NSObject <NSCopying>
@property(readonly, copy) NSNotificationName name;
@property(nullable, readonly, retain) id object;
@property(nullable, readonly, copy) NSDictionary* userInfo;
+ (instancetype)notificationWithName:(NSNotificationName)name object:(nullable id)object;
@end
@interface NSNotificationCenter : NSObject
@property(class, readonly, strong) NSNotificationCenter* defaultCenter;
- (void)addObserver:(id)observer
           selector:(SEL)selector
               name:(nullable NSNotificationName)name
             object:(nullable id)object;
- (void)postNotificationName:(NSNotificationName)name object:(nullable id)object;
- (void)removeObserver:(id)observer;
- (void)removeObserver:(id)observer name:(nullable NSNotificationName)name object:(nullable id)object;
- (id<NSObject>)addObserverForName:(nullable NSNotificationName)name
                            object:(nullable id)object
                             queue:(nullable NSOperationQueue*)queue
                        usingBlock:(void (^)(NSNotification* notification))block;
@end
typedef NS_ENUM(NSUInteger, NSNotificationSuspensionBehavior) {
  NSNotificationSuspensionBehaviorDrop = 1,
  NSNotificationSuspensionBehaviorCoalesce = 2,
  NSNotificationSuspensionBehaviorHold = 3,
  NSNotificationSuspensionBehaviorDeliverImmediately = 4,
};
@interface NSDistributedNotificationCenter : NSNotificationCenter
+ (NSDistributedNotificationCenter*)defaultCenter;
- (void)addObserver:(id)observer
              selector:(SEL)selector
                  name:(nullable NSNotificationName)name
                object:(nullable NSString*)object
    suspensionBehavior:(NSNotificationSuspensionBehavior)suspensionBehavior;
@end

typedef NSString* NSRunLoopMode;
FOUNDATION_EXPORT NSRunLoopMode const NSDefaultRunLoopMode;
FOUNDATION_EXPORT NSRunLoopMode const NSRunLoopCommonModes;
@class NSTimer;
@interface NSRunLoop : NSObject
@property(class, readonly, strong) NSRunLoop* currentRunLoop;
@property(class, readonly, strong) NSRunLoop* mainRunLoop;
- (void)addTimer:(NSTimer*)timer forMode:(NSRunLoopMode)mode;
- (void)run;
- (void)runUntilDate:(NSDate*)limit;
- (BOOL)runMode:(NSRunLoopMode)mode beforeDate:(NSDate*)limit;
@end
@interface NSTimer : NSObject
+ (NSTimer*)timerWithTimeInterval:(NSTimeInterval)interval
                          repeats:(BOOL)repeats
                            block:(void (^)(NSTimer* timer))block API_AVAILABLE_MACOS(10.12);
+ (NSTimer*)scheduledTimerWithTimeInterval:(NSTimeInterval)interval
                                   repeats:(BOOL)repeats
                                     block:(void (^)(NSTimer* timer))block API_AVAILABLE_MACOS(10.12);
- (void)fire;
- (void)invalidate;
@property(readonly, getter=isValid) BOOL valid;
@property(readonly) NSTimeInterval timeInterval;
@property NSTimeInterval tolerance;
@end

NS_ASSUME_NONNULL_END
