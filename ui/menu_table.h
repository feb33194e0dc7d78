// Vantorel. MIT licence, see LICENSE.
// The three menus as data.
#pragma once

#include <span>

namespace vantorel {

/// One entry: what it says, its key with Command, its action. An entry without a title is a separator.
struct MenuEntry {
    const char* title = "";
    const char* key = "";
    const char* action = "";
};

/// One menu of the menu bar. Without a title it is the application menu, which the platform labels itself.
struct MenuDescription {
    const char* title;
    std::span<const MenuEntry> entries;
};

inline constexpr const char* kToggleAlwaysOnTopAction = "toggleAlwaysOnTop";
inline constexpr const char* kToggleHideInScreenshotsAction = "toggleHideInScreenshots";

inline constexpr MenuEntry kApplicationEntries[] = {
    {"About Vantor", "", "showAbout"},
    {},
    {"Always on Top", "t", kToggleAlwaysOnTopAction},
    // Takes the key that hides applications elsewhere; there is no Hide item here.
    {"Hide in Screenshots", "h", kToggleHideInScreenshotsAction},
    {},
    {"Quit", "q", "terminate:"},
};

inline constexpr MenuEntry kViewEntries[] = {
    {"Reload", "r", "reload"},
    {"Actual Size", "0", "resetZoom"},
    {"Zoom In", "+", "zoomIn"},
    {"Zoom Out", "-", "zoomOut"},
};

inline constexpr MenuEntry kWindowEntries[] = {
    {"Minimize", "m", "miniaturize:"},
    {"Zoom", "", "zoom:"},
};

/// The menu bar from left to right. The application menu has to be the first: the window modes look for their items
/// there.
inline constexpr MenuDescription kMenus[] = {
    {"", kApplicationEntries},
    {"View", kViewEntries},
    {"Window", kWindowEntries},
};

} // namespace vantorel
