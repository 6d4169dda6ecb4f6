// SPDX-License-Identifier: MIT
// Menus and the status bar.
#pragma once
#include <AppKit/NSControls.h>

NS_ASSUME_NONNULL_BEGIN

@class NSMenu;
@protocol NSMenuDelegate <NSObject>
@optional
- (void)menuWillOpen:(NSMenu*)menu;
- (void)menuDidClose:(NSMenu*)menu;
- (void)menuNeedsUpdate:(NSMenu*)menu;
@end

@interface NSMenuItem : NSObject <NSCopying, NSCoding>
+ (NSMenuItem*)separatorItem;
- (instancetype)initWithTitle:(NSString*)title
                       action:(nullable SEL)action
                keyEquivalent:(NSString*)keyEquivalent NS_DESIGNATED_INITIALIZER;
- (instancetype)initWithCoder:(NSCoder*)coder NS_DESIGNATED_INITIALIZER;
@property(copy) NSString* title;
@property(nullable, weak) id target;
@property(nullable) SEL action;
@property(copy) NSString* keyEquivalent;
@property NSControlStateValue state;
@property(getter=isEnabled) BOOL enabled;
@property(getter=isHidden) BOOL hidden;
@property NSInteger tag;
@property(nullable, strong) NSImage* image;
@property(nullable, strong) id representedObject;
@property(nullable, assign) NSMenu* menu;
@property(readonly, getter=isSeparatorItem) BOOL separatorItem;
@end

@interface NSMenu : NSObject <NSCopying, NSCoding>
- (instancetype)initWithTitle:(NSString*)title NS_DESIGNATED_INITIALIZER;
- (instancetype)initWithCoder:(NSCoder*)coder NS_DESIGNATED_INITIALIZER;
- (void)addItem:(NSMenuItem*)item;
- (NSMenuItem*)addItemWithTitle:(NSString*)title
                         action:(nullable SEL)action
                  keyEquivalent:(NSString*)keyEquivalent;
- (void)insertItem:(NSMenuItem*)item atIndex:(NSInteger)index;
- (void)removeItem:(NSMenuItem*)item;
- (void)removeAllItems;
- (nullable NSMenuItem*)itemAtIndex:(NSInteger)index;
- (void)performActionForItemAtIndex:(NSInteger)index;
@property(copy) NSString* title;
@property(readonly) NSInteger numberOfItems;
@property(copy) NSArray<NSMenuItem*>* itemArray;
@property BOOL autoenablesItems;
@property NSUserInterfaceLayoutDirection userInterfaceLayoutDirection API_AVAILABLE_MACOS(10.11);
@property(nullable, weak) id<NSMenuDelegate> delegate;
@end

static const CGFloat NSVariableStatusItemLength = -1.0;
static const CGFloat NSSquareStatusItemLength = -2.0;

@class NSStatusBar;
@interface NSStatusBarButton : NSButton
@end
@interface NSStatusItem : NSObject
@property(nullable, readonly, weak) NSStatusBar* statusBar;
@property CGFloat length;
@property(nullable, strong) NSMenu* menu;
@property(nullable, readonly, strong) NSStatusBarButton* button API_AVAILABLE_MACOS(10.10);
@property(getter=isVisible) BOOL visible;
@end
@interface NSStatusBar : NSObject
@property(class, readonly, strong) NSStatusBar* systemStatusBar;
- (NSStatusItem*)statusItemWithLength:(CGFloat)length;
- (void)removeStatusItem:(NSStatusItem*)item;
@end

NS_ASSUME_NONNULL_END
