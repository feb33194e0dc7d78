// Vantorel. MIT licence, see LICENSE.
// The script that copies a page's console to the shell.
#pragma once

#include <string_view>

namespace vantorel {

/// The channel that the script posts on.
inline constexpr const char* kConsoleChannel = "consoleLog";

/// Runs before every script of every frame: posts each console.log, console.error and console.warn as {type, message}
/// and then calls the page's own function.
std::string_view bridgeScript();

} // namespace vantorel
