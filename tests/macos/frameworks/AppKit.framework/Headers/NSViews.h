// Vantorel. MIT licence, see LICENSE.
// AppKit: colours, fonts, views, text fields.
#pragma once

#import <Foundation/Foundation.h>

@class CALayer;
@class NSWindow;

NS_ASSUME_NONNULL_BEGIN

@interface NSColor : NSObject
@property (class, readonly, strong) NSColor* clearColor;
@property (class, readonly, strong) NSColor* orangeColor;
@property (class, readonly, strong) NSColor* redColor;
@property (class, readonly, strong) NSColor* systemGreenColor;
+ (NSColor*)colorWithCalibratedRed:(CGFloat)red green:(CGFloat)green blue:(CGFloat)blue alpha:(CGFloat)alpha;
@property (readonly) CGColorRef CGColor;
@end

@interface NSFont : NSObject
+ (NSFont*)systemFontOfSize:(CGFloat)fontSize;
@property (readonly) CGFloat pointSize;
@end

typedef NS_OPTIONS(NSUInteger, NSAutoresizingMaskOptions){
    NSViewWidthSizable = 2,
    NSViewMinYMargin = 8,
    NSViewHeightSizable = 16,
};

typedef NS_ENUM(NSInteger, NSWindowOrderingMode){
    NSWindowAbove = 1,
    NSWindowBelow = -1,
};

@interface NSResponder : NSObject
@end

@interface NSView : NSResponder
- (instancetype)initWithFrame:(NSRect)frameRect;
- (void)addSubview:(NSView*)view;
- (void)addSubview:(NSView*)view positioned:(NSWindowOrderingMode)place relativeTo:(nullable NSView*)otherView;
@property NSAutoresizingMaskOptions autoresizingMask;
@property NSRect frame;
@property NSRect bounds;
@property (copy) NSArray<__kindof NSView*>* subviews;
@property (nullable, readonly, weak) NSWindow* window;
@property BOOL wantsLayer;
@property (nullable, strong) CALayer* layer;
@end

@interface NSControl : NSView
@property (copy) NSString* stringValue;
@property (nullable, strong) NSFont* font;
- (void)performClick:(nullable id)sender;
@end

@interface NSButton : NSControl
@property (copy) NSString* title;
@end

@interface NSTextField : NSControl
@property (nullable, copy) NSColor* backgroundColor;
@property (nullable, copy) NSColor* textColor;
@property (getter=isBordered) BOOL bordered;
@property (getter=isBezeled) BOOL bezeled;
@property (getter=isEditable) BOOL editable;
@end

NS_ASSUME_NONNULL_END
