// SPDX-License-Identifier: MIT
#pragma once
#include <Foundation/Foundation.h>

NS_ASSUME_NONNULL_BEGIN

typedef NSString* NSPasteboardType;
LXW_SDK_EXTERN NSPasteboardType const NSPasteboardTypeString;
LXW_SDK_EXTERN NSPasteboardType const NSPasteboardTypeRTF;
LXW_SDK_EXTERN NSPasteboardType const NSPasteboardTypeHTML;
LXW_SDK_EXTERN NSPasteboardType const NSPasteboardTypePNG;

@class NSPasteboard, NSPasteboardItem;
@protocol NSPasteboardWriting <NSObject>
- (NSArray<NSPasteboardType>*)writableTypesForPasteboard:(NSPasteboard*)pasteboard;
- (nullable id)pasteboardPropertyListForType:(NSPasteboardType)type;
@end
@protocol NSPasteboardItemDataProvider <NSObject>
- (void)pasteboard:(nullable NSPasteboard*)pasteboard
                  item:(NSPasteboardItem*)item
    provideDataForType:(NSPasteboardType)type;
@optional
- (void)pasteboardFinishedWithDataProvider:(NSPasteboard*)pasteboard;
@end

@interface NSPasteboardItem : NSObject <NSPasteboardWriting>
@property(readonly, copy) NSArray<NSPasteboardType>* types;
- (BOOL)setDataProvider:(id<NSPasteboardItemDataProvider>)provider forTypes:(NSArray<NSPasteboardType>*)types;
- (BOOL)setData:(NSData*)data forType:(NSPasteboardType)type;
- (BOOL)setString:(NSString*)string forType:(NSPasteboardType)type;
- (nullable NSData*)dataForType:(NSPasteboardType)type;
- (nullable NSString*)stringForType:(NSPasteboardType)type;
@end

// accessBehavior, of macOS 15.4, is left out on purpose: an older SDK does not have it either.
@interface NSPasteboard : NSObject
@property(class, readonly, strong) NSPasteboard* generalPasteboard;
@property(readonly) NSInteger changeCount;
@property(nullable, readonly, copy) NSArray<NSPasteboardItem*>* pasteboardItems;
@property(nullable, readonly, copy) NSArray<NSPasteboardType>* types;
- (NSInteger)clearContents;
- (BOOL)writeObjects:(NSArray<id<NSPasteboardWriting>>*)objects;
- (nullable NSString*)stringForType:(NSPasteboardType)type;
- (BOOL)setString:(NSString*)string forType:(NSPasteboardType)type;
- (nullable NSData*)dataForType:(NSPasteboardType)type;
- (BOOL)setData:(nullable NSData*)data forType:(NSPasteboardType)type;
@end

NS_ASSUME_NONNULL_END
