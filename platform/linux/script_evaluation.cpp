// Vantorel. MIT licence, see LICENSE.
// Scripts that the application runs in the page.
#include "platform/linux/script_evaluation.h"

#include <memory>
#include <utility>

#include "platform/linux/engine_error.h"
#include "platform/linux/object.h"

namespace vantorel::gtk {

namespace {

using Completion = std::function<void(const std::optional<PlatformError>&)>;

std::optional<PlatformError> outcome(const GError* error) {
    if (error == nullptr) {
        return std::nullopt;
    }
    // With a plain number as the script's value this can only mean that there was nobody to compute it.
    if (g_error_matches(error, WEBKIT_JAVASCRIPT_ERROR, WEBKIT_JAVASCRIPT_ERROR_INVALID_RESULT) != 0) {
        return pageProcessGoneError();
    }
    return platformError(*error);
}

} // namespace

void evaluateScript(WebKitWebView* view, const std::string& script, Completion completion) {
    // A value that can't leave the page is no error, but the engine makes it one: so the value is always a number. The
    // line break ends a comment in the script's last line.
    const std::string text = script + "\n;0";
    webkit_web_view_evaluate_javascript(
        view, text.data(), static_cast<gssize>(text.size()), nullptr, nullptr, nullptr,
        [](GObject* source, GAsyncResult* result, gpointer data) {
            const std::unique_ptr<Completion> kept(static_cast<Completion*>(data));
            GError* error = nullptr;
            const auto value = Object<JSCValue>::take(
                webkit_web_view_evaluate_javascript_finish(WEBKIT_WEB_VIEW(source), result, &error));
            const GErrorPointer owned(error);
            if (*kept) {
                guarded(*kept, outcome(error));
            }
        },
        new Completion(std::move(completion)));
}

} // namespace vantorel::gtk
