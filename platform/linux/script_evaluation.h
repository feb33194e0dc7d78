// Vantorel. MIT licence, see LICENSE.
// Scripts that the application runs in the page.
#pragma once

#include <webkit/webkit.h>

#include <functional>
#include <optional>
#include <string>

#include "platform/platform_error.h"

namespace vantorel::gtk {

/// Runs `script` in the global scope of the view's page. `completion` comes once, later, on the main thread, also when
/// the page's process ends or the view goes away meanwhile. What the script's last statement gives is left in the page.
void evaluateScript(WebKitWebView* view, const std::string& script,
                    std::function<void(const std::optional<PlatformError>&)> completion);

} // namespace vantorel::gtk
