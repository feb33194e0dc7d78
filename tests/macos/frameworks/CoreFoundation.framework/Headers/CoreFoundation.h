// Vantorel. MIT licence, see LICENSE.
// The part of CoreFoundation that the shell uses, declared from its published API for the cross-build.
#pragma once

#include <TargetConditionals.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef const void* CFTypeRef;
typedef unsigned long CFTypeID;
typedef const struct __CFDictionary* CFDictionaryRef;
typedef const struct __attribute__((objc_bridge(NSString))) __CFString* CFStringRef;
typedef double CFTimeInterval;

typedef struct __CFRunLoop* CFRunLoopRef;
typedef CFStringRef CFRunLoopMode;
extern const CFRunLoopMode kCFRunLoopCommonModes;

CFRunLoopRef CFRunLoopGetMain(void);
void CFRunLoopPerformBlock(CFRunLoopRef rl, CFTypeRef mode, void (^block)(void));
void CFRunLoopWakeUp(CFRunLoopRef rl);

CFTypeID CFGetTypeID(CFTypeRef cf);
CFTypeID CFBooleanGetTypeID(void);

#ifdef __cplusplus
}
#endif
