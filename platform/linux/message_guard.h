// Vantorel. MIT licence, see LICENSE.
// The script that keeps a page's messages small and few enough for the window to stay responsive.
#pragma once

#include <string>

namespace vantorel::gtk {

/// A script for the start of every frame. The engine decodes a posted value on the application's main thread, at a
/// priority above drawing: 100 MB in one text or 100 000 messages in a loop hold up the window for a second or more
/// (WebKitGTK 2.50). With the script, postMessage of the channel `name` cuts values to the limits while they are still
/// in the page, and what comes in a flood travels in bundles that begin with `mark` (script_bundle.h), at a pace. Order
/// is kept, nothing is dropped. The mark stays out of the page's reach.
std::string messageGuardScript(const std::string& name, const std::string& mark);

} // namespace vantorel::gtk
