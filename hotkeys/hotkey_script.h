// Vantorel. MIT licence, see LICENSE.
// The script that makes the page send a hotkey to the server.
#pragma once

#include <string>
#include <string_view>

namespace vantorel {

/// The script for the command `name`, which goes into it as it is: lower-case letters and underscores only. The page
/// sends {"type":"trigger_hotkey","hotkey":NAME} over its open window.ws and says on its console whether it could.
std::string hotkeyScript(std::string_view name);

} // namespace vantorel
