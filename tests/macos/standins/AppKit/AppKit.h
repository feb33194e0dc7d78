// Vantorel. MIT licence, see LICENSE.
// What the backend's Foundation part needs of AppKit, CoreFoundation and the compiler's headers, on Linux over GNUstep's
// Foundation.
#pragma once

#import <Foundation/Foundation.h>

#ifndef __unused
#define __unused __attribute__((unused))
#endif

/// Only its components are of interest.
@interface NSColor : NSObject {
@public
    CGFloat red;
    CGFloat green;
    CGFloat blue;
    CGFloat alpha;
}
+ (NSColor*)clearColor;
+ (NSColor*)orangeColor;
+ (NSColor*)redColor;
+ (NSColor*)systemGreenColor;
+ (NSColor*)colorWithCalibratedRed:(CGFloat)red green:(CGFloat)green blue:(CGFloat)blue alpha:(CGFloat)alpha;
@end

@interface NSFileManager (StandIn)
- (BOOL)setAttributes:(NSDictionary*)attributes ofItemAtPath:(NSString*)path error:(NSError**)error;
@end

extern "C" {
typedef const void* CFTypeRef;
typedef unsigned long CFTypeID;

CFTypeID CFGetTypeID(CFTypeRef value);
CFTypeID CFBooleanGetTypeID(void);
}
