// Vantorel. MIT licence, see LICENSE.
// AppKit: the application, its delegate, the workspace.
#pragma once

#import <AppKit/NSEvents.h>
#import <AppKit/NSViews.h>

@class NSMenu;
@class NSWindow;
@protocol NSApplicationDelegate;

NS_ASSUME_NONNULL_BEGIN

@interface NSApplication : NSResponder
@property (class, readonly, strong) NSApplication* sharedApplication;
@property (nullable, weak) id<NSApplicationDelegate> delegate;
@property (nullable, strong) NSMenu* mainMenu;
@property (nullable, readonly, weak) NSWindow* modalWindow;
- (void)activateIgnoringOtherApps:(BOOL)ignoreOtherApps;
- (void)run;
- (void)terminate:(nullable id)sender;
- (void)finishLaunching;
- (void)stop:(nullable id)sender;
- (nullable NSEvent*)nextEventMatchingMask:(NSEventMask)mask
                                 untilDate:(nullable NSDate*)expiration
                                    inMode:(NSRunLoopMode)mode
                                   dequeue:(BOOL)deqFlag;
- (void)sendEvent:(NSEvent*)event;
- (void)postEvent:(NSEvent*)event atStart:(BOOL)flag;
- (BOOL)sendAction:(SEL)action to:(nullable id)target from:(nullable id)sender;
@end

@protocol NSApplicationDelegate <NSObject>
@optional
- (void)applicationDidFinishLaunching:(NSNotification*)notification;
- (BOOL)applicationShouldTerminateAfterLastWindowClosed:(NSApplication*)sender;
- (BOOL)applicationSupportsSecureRestorableState:(NSApplication*)app __attribute__((availability(macos, introduced = 12.0)));
- (void)applicationWillTerminate:(NSNotification*)notification;
@end

@interface NSWorkspace : NSObject
@property (class, readonly, strong) NSWorkspace* sharedWorkspace;
- (BOOL)openURL:(NSURL*)url;
@end

NS_ASSUME_NONNULL_END
