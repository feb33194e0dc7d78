// Vantorel. MIT licence, see LICENSE.
// The part of AppKit that the shell uses, declared from its published API for the cross-build.
#pragma once

#import <AppKit/NSApplications.h>
#import <AppKit/NSEvents.h>
#import <AppKit/NSMenus.h>
#import <AppKit/NSViews.h>
#import <AppKit/NSWindows.h>
#import <Foundation/Foundation.h>
