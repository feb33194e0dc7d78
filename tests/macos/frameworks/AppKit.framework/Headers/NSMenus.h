// Vantorel. MIT licence, see LICENSE.
// AppKit: menus.
#pragma once

#import <Foundation/Foundation.h>

@class NSMenu;

NS_ASSUME_NONNULL_BEGIN

typedef NSInteger NSControlStateValue;

@interface NSMenuItem : NSObject
+ (NSMenuItem*)separatorItem;
- (instancetype)initWithTitle:(NSString*)string action:(nullable SEL)selector keyEquivalent:(NSString*)charCode;
@property (nullable, strong) NSMenu* submenu;
@property NSControlStateValue state;
@end

@interface NSMenu : NSObject
- (instancetype)initWithTitle:(NSString*)title;
- (void)addItem:(NSMenuItem*)newItem;
@end

NS_ASSUME_NONNULL_END
