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

CFTypeID CFGetTypeID(CFTypeRef cf);
CFTypeID CFBooleanGetTypeID(void);

#ifdef __cplusplus
}
#endif
