// Vantorel. MIT licence, see LICENSE.
// AppKit: key events and their monitors.
#pragma once

#import <Foundation/Foundation.h>

NS_ASSUME_NONNULL_BEGIN

typedef NS_OPTIONS(unsigned long long, NSEventMask){
    NSEventMaskKeyDown = 1ULL << 10,
};

typedef NS_ENUM(NSUInteger, NSEventType){
    NSEventTypeApplicationDefined = 15,
};

typedef NS_OPTIONS(NSUInteger, NSEventModifierFlags){
    NSEventModifierFlagCommand = 1 << 20,
};

@class NSGraphicsContext;

@interface NSEvent : NSObject
@property (readonly) NSEventModifierFlags modifierFlags;
@property (nullable, readonly, copy) NSString* characters;
@property (readonly) unsigned short keyCode;
+ (nullable NSEvent*)otherEventWithType:(NSEventType)type
                               location:(NSPoint)location
                          modifierFlags:(NSEventModifierFlags)flags
                              timestamp:(NSTimeInterval)time
                           windowNumber:(NSInteger)wNum
                                context:(nullable NSGraphicsContext*)unusedPassNil
                                subtype:(short)subtype
                                  data1:(NSInteger)d1
                                  data2:(NSInteger)d2;
+ (nullable id)addGlobalMonitorForEventsMatchingMask:(NSEventMask)mask handler:(void (^)(NSEvent* event))block;
+ (nullable id)addLocalMonitorForEventsMatchingMask:(NSEventMask)mask
                                            handler:(NSEvent* _Nullable (^)(NSEvent* event))block;
@end

NS_ASSUME_NONNULL_END
