// Vantorel. MIT licence, see LICENSE.
// The part of CoreGraphics that the shell uses, declared from its published API for the cross-build.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <stdbool.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef double CGFloat;

typedef struct CGPoint {
    CGFloat x;
    CGFloat y;
} CGPoint;

typedef struct CGSize {
    CGFloat width;
    CGFloat height;
} CGSize;

typedef struct CGRect {
    CGPoint origin;
    CGSize size;
} CGRect;

typedef struct CGColor* CGColorRef;

bool CGPreflightScreenCaptureAccess(void) __attribute__((availability(macos, introduced = 10.15)));
bool CGRequestScreenCaptureAccess(void) __attribute__((availability(macos, introduced = 10.15)));

#ifdef __cplusplus
}
#endif
