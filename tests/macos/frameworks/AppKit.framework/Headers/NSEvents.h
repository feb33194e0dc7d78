// Vantorel. MIT licence, see LICENSE.
// AppKit: key events and their monitors.
#pragma once

#import <Foundation/Foundation.h>

NS_ASSUME_NONNULL_BEGIN

typedef NS_OPTIONS(unsigned long long, NSEventMask){
    NSEventMaskKeyDown = 1ULL << 10,
};

typedef NSUInteger NSEventModifierFlags;

@interface NSEvent : NSObject
@property (readonly) NSEventModifierFlags modifierFlags;
@property (nullable, readonly, copy) NSString* characters;
@property (readonly) unsigned short keyCode;
+ (nullable id)addGlobalMonitorForEventsMatchingMask:(NSEventMask)mask handler:(void (^)(NSEvent* event))block;
+ (nullable id)addLocalMonitorForEventsMatchingMask:(NSEventMask)mask
                                            handler:(NSEvent* _Nullable (^)(NSEvent* event))block;
@end

NS_ASSUME_NONNULL_END
