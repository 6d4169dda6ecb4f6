// SPDX-License-Identifier: MIT
// Fonts, colours, images, views, labels and buttons.
#pragma once
#include <CoreGraphics/CoreGraphics.h>
#include <Foundation/Foundation.h>
#include <QuartzCore/QuartzCore.h>

@class NSWindow;

NS_ASSUME_NONNULL_BEGIN

typedef CGFloat NSFontWeight;
LXW_SDK_EXTERN const NSFontWeight NSFontWeightRegular;
LXW_SDK_EXTERN const NSFontWeight NSFontWeightMedium;
LXW_SDK_EXTERN const NSFontWeight NSFontWeightSemibold;
LXW_SDK_EXTERN const NSFontWeight NSFontWeightBold;
@interface NSFont : NSObject <NSCopying, NSSecureCoding>
+ (NSFont*)systemFontOfSize:(CGFloat)size;
+ (NSFont*)systemFontOfSize:(CGFloat)size weight:(NSFontWeight)weight API_AVAILABLE_MACOS(10.11);
@property(readonly) CGFloat pointSize;
@end

@interface NSAppearance : NSObject <NSSecureCoding>
- (void)performAsCurrentDrawingAppearance:(__attribute__((noescape))void (^)(void))block
    API_AVAILABLE_MACOS(11.0);
@end

@interface NSColor : NSObject <NSCopying, NSSecureCoding>
@property(class, strong, readonly) NSColor* labelColor;
@property(class, strong, readonly) NSColor* secondaryLabelColor;
@property(class, strong, readonly) NSColor* tertiaryLabelColor;
@property(class, strong, readonly) NSColor* quaternaryLabelColor;
@property(class, strong, readonly) NSColor* systemRedColor;
// No reference of the caller's own: the compiler keeps the colour object alive while this is in use.
@property(readonly) CGColorRef CGColor __attribute__((objc_returns_inner_pointer));
@end

@interface NSImage : NSObject <NSCopying, NSSecureCoding>
+ (nullable instancetype)imageWithSystemSymbolName:(NSString*)name
                          accessibilityDescription:(nullable NSString*)description API_AVAILABLE_MACOS(11.0);
+ (nullable NSImage*)imageNamed:(NSString*)name;
// The property's own name is a keyword of C++, so only its two methods can be written here.
- (BOOL)isTemplate;
- (void)setTemplate:(BOOL)isTemplate;
@property(nullable, copy) NSString* accessibilityDescription;
@property NSSize size;
@end

@interface NSResponder : NSObject <NSCoding>
- (instancetype)init NS_DESIGNATED_INITIALIZER;
- (nullable instancetype)initWithCoder:(NSCoder*)coder NS_DESIGNATED_INITIALIZER;
@end

typedef NS_ENUM(NSInteger, NSUserInterfaceLayoutDirection) {
  NSUserInterfaceLayoutDirectionLeftToRight = 0,
  NSUserInterfaceLayoutDirectionRightToLeft = 1,
};
@interface NSView : NSResponder
- (instancetype)initWithFrame:(NSRect)frame NS_DESIGNATED_INITIALIZER;
- (nullable instancetype)initWithCoder:(NSCoder*)coder NS_DESIGNATED_INITIALIZER;
@property NSRect frame;
@property NSRect bounds;
- (void)addSubview:(NSView*)view;
- (void)removeFromSuperview;
@property(copy) NSArray<__kindof NSView*>* subviews;
@property(nullable, readonly, unsafe_unretained) NSView* superview;
@property(nullable, readonly, unsafe_unretained) NSWindow* window;
@property(getter=isHidden) BOOL hidden;
@property BOOL wantsLayer;
@property(nullable, strong) CALayer* layer;
@property BOOL needsDisplay;
@property(readonly, strong) NSAppearance* effectiveAppearance API_AVAILABLE_MACOS(10.14);
- (void)viewDidChangeEffectiveAppearance API_AVAILABLE_MACOS(10.14);
@property NSUserInterfaceLayoutDirection userInterfaceLayoutDirection;
@end

typedef NS_ENUM(NSInteger, NSTextAlignment) {
  NSTextAlignmentLeft = 0,
#if TARGET_ABI_USES_IOS_VALUES
  NSTextAlignmentCenter = 1,
  NSTextAlignmentRight = 2,
#else
  NSTextAlignmentRight = 1,
  NSTextAlignmentCenter = 2,
#endif
  NSTextAlignmentJustified = 3,
  NSTextAlignmentNatural = 4,
};
typedef NS_ENUM(NSInteger, NSWritingDirection) {
  NSWritingDirectionNatural = -1,
  NSWritingDirectionLeftToRight = 0,
  NSWritingDirectionRightToLeft = 1,
};
typedef NSInteger NSControlStateValue;
static const NSControlStateValue NSControlStateValueMixed = -1;
static const NSControlStateValue NSControlStateValueOff = 0;
static const NSControlStateValue NSControlStateValueOn = 1;

@interface NSControl : NSView
@property(nullable, weak) id target;
@property(nullable) SEL action;
@property NSInteger tag;
@property(getter=isEnabled) BOOL enabled;
@property(copy) NSString* stringValue;
@property(nullable, copy) NSFont* font;
@property NSTextAlignment alignment;
@property NSWritingDirection baseWritingDirection;
@property BOOL usesSingleLineMode;
- (void)performClick:(nullable id)sender;
@end

@interface NSTextField : NSControl
+ (instancetype)labelWithString:(NSString*)string API_AVAILABLE_MACOS(10.12);
+ (instancetype)wrappingLabelWithString:(NSString*)string API_AVAILABLE_MACOS(10.12);
@property(nullable, copy) NSColor* textColor;
@property(nullable, copy) NSColor* backgroundColor;
@property BOOL drawsBackground;
@property(getter=isBordered) BOOL bordered;
@property(getter=isBezeled) BOOL bezeled;
@property(getter=isEditable) BOOL editable;
@property(getter=isSelectable) BOOL selectable;
@property NSInteger maximumNumberOfLines;
@end

typedef NS_ENUM(NSUInteger, NSBezelStyle) {
  NSBezelStyleRounded = 1,
  NSBezelStyleRegularSquare = 2,
};
@interface NSButton : NSControl
+ (instancetype)buttonWithTitle:(NSString*)title
                         target:(nullable id)target
                         action:(nullable SEL)action API_AVAILABLE_MACOS(10.12);
@property(copy) NSString* title;
@property NSBezelStyle bezelStyle;
@property(nullable, strong) NSImage* image;
@property NSControlStateValue state;
@property(copy) NSString* keyEquivalent;
@end

NS_ASSUME_NONNULL_END
