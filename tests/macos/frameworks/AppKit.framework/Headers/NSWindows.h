// Vantorel. MIT licence, see LICENSE.
// AppKit: windows and alerts.
#pragma once

#import <AppKit/NSViews.h>

NS_ASSUME_NONNULL_BEGIN

typedef NS_OPTIONS(NSUInteger, NSWindowStyleMask){
    NSWindowStyleMaskTitled = 1,
    NSWindowStyleMaskClosable = 2,
    NSWindowStyleMaskMiniaturizable = 4,
    NSWindowStyleMaskResizable = 8,
};

typedef NS_ENUM(NSUInteger, NSBackingStoreType){
    NSBackingStoreBuffered = 2,
};

typedef NS_ENUM(NSUInteger, NSWindowSharingType){
    NSWindowSharingNone = 0,
    NSWindowSharingReadOnly = 1,
};

typedef NSInteger NSWindowLevel;

@interface NSWindow : NSResponder
- (instancetype)initWithContentRect:(NSRect)contentRect
                          styleMask:(NSWindowStyleMask)style
                            backing:(NSBackingStoreType)backingStoreType
                              defer:(BOOL)flag;
@property (copy) NSString* title;
@property NSWindowStyleMask styleMask;
@property (readonly, getter=isVisible) BOOL visible;
@property (getter=isReleasedWhenClosed) BOOL releasedWhenClosed;
@property (nullable, strong) NSView* contentView;
@property (nullable, weak) NSView* initialFirstResponder;
@property (readonly) NSRect frame;
@property NSSize minSize;
@property NSWindowLevel level;
@property NSWindowSharingType sharingType;
@property BOOL preventsApplicationTerminationWhenModal;
- (void)makeKeyAndOrderFront:(nullable id)sender;
- (void)center;
- (void)setContentSize:(NSSize)size;
- (void)close;
@end

typedef NS_ENUM(NSUInteger, NSAlertStyle){
    NSAlertStyleWarning = 0,
    NSAlertStyleInformational = 1,
    NSAlertStyleCritical = 2,
};

typedef NSInteger NSModalResponse;

@class NSButton;

@interface NSAlert : NSObject
@property (copy) NSString* messageText;
@property (copy) NSString* informativeText;
@property NSAlertStyle alertStyle;
@property (nullable, strong) NSView* accessoryView;
@property (readonly, strong) NSWindow* window;
- (NSButton*)addButtonWithTitle:(NSString*)title;
- (NSModalResponse)runModal;
@end

NS_ASSUME_NONNULL_END
