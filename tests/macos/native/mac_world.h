// Vantorel. MIT licence, see LICENSE.
// The world of the macOS platform for the contract's cases and the native ones: AppKit's event loop run by hand.
#pragma once

#import <AppKit/AppKit.h>

#include <functional>
#include <string>

#include "platform/platform.h"
#include "tests/contract/world.h"

namespace vantorel::mac::test {

/// The one platform of the process, made at the first call. It lives until the process ends.
Platform& nativePlatform();

/// The time since the system's start.
double secondsNow();

/// Handles events, timers and the main queue until `condition` holds: true then, false after `seconds`.
bool runUntil(const std::function<bool()>& condition, double seconds = 20);

/// The same for as long as `seconds`, for what must not happen.
void runFor(double seconds);

/// The NSWindow that `window` shows.
NSWindow* nativeWindow(Window& window);

/// Calls `action` once a modal window is up, from inside its loop.
void whenModal(std::function<void(NSWindow* modal)> action);

/// The button of `window` with that title; nil when it has none.
NSButton* buttonTitled(NSWindow* window, const std::string& title);

} // namespace vantorel::mac::test
