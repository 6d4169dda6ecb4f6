// SPDX-License-Identifier: MIT
#pragma once
#include <CoreGraphics/CoreGraphics.h>
#include <Foundation/Foundation.h>

NS_ASSUME_NONNULL_BEGIN
@interface CALayer : NSObject
@property CGFloat cornerRadius;
@property BOOL masksToBounds;
@property(nullable) CGColorRef backgroundColor;
@end
NS_ASSUME_NONNULL_END
