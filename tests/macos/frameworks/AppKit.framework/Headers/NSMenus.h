// Vantorel. MIT licence, see LICENSE.
// AppKit: menus.
#pragma once

#import <AppKit/NSEvents.h>

@class NSMenu;

NS_ASSUME_NONNULL_BEGIN

typedef NSInteger NSControlStateValue;

@interface NSMenuItem : NSObject
+ (NSMenuItem*)separatorItem;
- (instancetype)initWithTitle:(NSString*)string action:(nullable SEL)selector keyEquivalent:(NSString*)charCode;
@property (copy) NSString* title;
@property (nullable) SEL action;
@property (nullable, weak) id target;
@property (copy) NSString* keyEquivalent;
@property NSEventModifierFlags keyEquivalentModifierMask;
@property (readonly, getter=isSeparatorItem) BOOL separatorItem;
@property (nullable, strong) NSMenu* submenu;
@property NSControlStateValue state;
@end

@interface NSMenu : NSObject
- (instancetype)initWithTitle:(NSString*)title;
- (void)addItem:(NSMenuItem*)newItem;
@property (copy) NSString* title;
@property (copy) NSArray<NSMenuItem*>* itemArray;
@end

NS_ASSUME_NONNULL_END
