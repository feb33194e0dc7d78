// Vantorel. MIT licence, see LICENSE.
// The user's preferences in a key file.
#pragma once

#include <memory>
#include <string>

#include "platform/foundation.h"

namespace vantorel::gtk {

/// Where the preferences are: $XDG_CONFIG_HOME/Vantorel/defaults.ini, with ~/.config as default; empty without a home.
std::string userDefaultsPath();

/// The store in the key file at `path`, group [defaults]. The file is written whole at each change, together with what
/// else it holds; an empty path keeps values for this run only.
std::unique_ptr<UserDefaults> makeUserDefaults(const std::string& path);

std::unique_ptr<UserDefaults> makeUserDefaults();

} // namespace vantorel::gtk
