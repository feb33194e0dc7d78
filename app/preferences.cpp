// Vantorel. MIT licence, see LICENSE.
// The window modes as the user left them.
#include "app/app_delegate.h"
#include "app/preference_keys.h"
#include "app/require.h"

namespace vantorel {

void AppDelegate::restorePreferences() {
    // The store reads an absent key as false, which is wrong for the first: presence has to be asked for.
    const UserDefaults& defaults = platform().userDefaults();
    setHideInScreenshots(!defaults.hasObject(kHideInScreenshotsKey) || defaults.boolForKey(kHideInScreenshotsKey));
    setAlwaysOnTop(defaults.hasObject(kAlwaysOnTopKey) && defaults.boolForKey(kAlwaysOnTopKey));
    if (alwaysOnTop())
        require(window(), "window").setLevel(WindowLevel::floating);
}

} // namespace vantorel
