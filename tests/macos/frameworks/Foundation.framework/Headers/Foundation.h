// Vantorel. MIT licence, see LICENSE.
// The part of Foundation that the shell uses, declared from its published API for the cross-build.
#pragma once

#import <CoreFoundation/CoreFoundation.h>
#import <CoreGraphics/CoreGraphics.h>
#import <Foundation/NSBasics.h>
#import <Foundation/NSCollections.h>
#import <Foundation/NSProcesses.h>
#import <Foundation/NSRequests.h>
#import <Foundation/NSText.h>
