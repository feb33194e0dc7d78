// Vantorel. MIT licence, see LICENSE.
// The part of ApplicationServices that the shell uses, declared from its published API for the cross-build.
#pragma once

#import <CoreFoundation/CoreFoundation.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef unsigned char Boolean;

extern CFStringRef kAXTrustedCheckOptionPrompt;
Boolean AXIsProcessTrustedWithOptions(CFDictionaryRef options);
Boolean AXIsProcessTrusted(void);

#ifdef __cplusplus
}
#endif
