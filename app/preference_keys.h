// Vantorel. MIT licence, see LICENSE.
// The keys of the user's defaults store. Their names and types are fixed: earlier versions have written them.
#pragma once

namespace vantorel {

/// Boolean; absent means false.
inline constexpr const char* kAlwaysOnTopKey = "alwaysOnTop";
/// Boolean; absent means true.
inline constexpr const char* kHideInScreenshotsKey = "hideInScreenshots";
/// Boolean; absent means false. True once the first launch has asked for the system's permissions; never cleared.
inline constexpr const char* kHasRequestedPermissionsKey = "hasRequestedPermissions";
/// Text of a rectangle: the window's outer frame at the last normal quit.
inline constexpr const char* kWindowFrameKey = "windowFrame";

} // namespace vantorel
