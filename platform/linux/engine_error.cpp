// Vantorel. MIT licence, see LICENSE.
// Errors of GLib, libsoup and the web engine in the words of the seam.
#include "platform/linux/engine_error.h"

namespace vantorel::gtk {

PlatformError platformError(const GError& error) {
    const char* domain = g_quark_to_string(error.domain);
    std::string text = error.message != nullptr ? error.message : "";
    if (text.empty()) {
        text = "The operation couldn't be completed.";
    }
    return {text, std::string(domain != nullptr ? domain : "unknown") + " " + std::to_string(error.code) + ": " + text};
}

PlatformError platformError(const std::string& text) { return {text, "Vantorel: " + text}; }

PlatformError timedOutError() { return platformError("The request timed out."); }

PlatformError cancelledError() { return platformError("The load was cancelled."); }

PlatformError refusedError() { return platformError("The address uses a port that web pages can't be loaded from."); }

PlatformError connectionLostError() { return platformError("The network connection was lost."); }

PlatformError pageProcessGoneError() { return platformError("The page's process ended."); }

} // namespace vantorel::gtk
