// Vantorel. MIT licence, see LICENSE.
// The script that copies a page's console to the shell.
#include "web/bridge_script.h"

namespace vantorel {

std::string_view bridgeScript() {
    static constexpr std::string_view kScript =
        R"((function() {
    var console = window.console || {};
    var old = {
        log: console.log,
        error: console.error,
        warn: console.warn
    };
    console.log = function() {
        window.webkit.messageHandlers.consoleLog.postMessage({type: 'log', message: Array.from(arguments).join(' ')});
        old.log.apply(console, arguments);
    };
    console.error = function() {
        window.webkit.messageHandlers.consoleLog.postMessage({type: 'error', message: Array.from(arguments).join(' ')});
        old.error.apply(console, arguments);
    };
    console.warn = function() {
        window.webkit.messageHandlers.consoleLog.postMessage({type: 'warn', message: Array.from(arguments).join(' ')});
        old.warn.apply(console, arguments);
    };
})();)";
    return kScript;
}

} // namespace vantorel
