// Vantorel. MIT licence, see LICENSE.
// The part of QuartzCore that the shell uses, declared from its published API for the cross-build.
#pragma once

#import <Foundation/Foundation.h>

NS_ASSUME_NONNULL_BEGIN

@interface CALayer : NSObject
@property (nullable) CGColorRef backgroundColor;
@end

NS_ASSUME_NONNULL_END
