// Vantorel. MIT licence, see LICENSE.
// Scripts that the application runs in the page.
#include "platform/linux/script_evaluation.h"

#include <utility>

#include "platform/linux/engine_error.h"
#include "platform/linux/object.h"
#include "platform/linux/queue.h"

namespace vantorel::gtk {

namespace {

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

ScriptEvaluations::~ScriptEvaluations() {
    for (const Pending& pending : pending_) {
        if (const Completion completion = std::exchange(*pending, nullptr)) {
            mainQueue().async([completion] { completion(pageProcessGoneError()); });
        }
    }
}

void ScriptEvaluations::evaluate(WebKitWebView* view, const std::string& script, Completion completion) {
    pending_.remove_if([](const Pending& pending) { return !*pending; });
    const auto pending =
        std::make_shared<Completion>(completion ? std::move(completion) : [](const std::optional<PlatformError>&) {});
    pending_.push_back(pending);
    // A value that can't leave the page is no error, but the engine makes it one: so the value is always a number. The
    // line break ends a comment in the script's last line.
    const std::string text = script + "\n;0";
    webkit_web_view_evaluate_javascript(view, text.data(), static_cast<gssize>(text.size()), nullptr, nullptr, nullptr,
                                        completed, new Pending(pending));
}

void ScriptEvaluations::completed(GObject* source, GAsyncResult* result, gpointer data) {
    const std::unique_ptr<Pending> pending(static_cast<Pending*>(data));
    GError* error = nullptr;
    const auto value =
        Object<JSCValue>::take(webkit_web_view_evaluate_javascript_finish(WEBKIT_WEB_VIEW(source), result, &error));
    const GErrorPointer owned(error);
    if (const Completion completion = std::exchange(**pending, nullptr)) {
        guarded(completion, outcome(error));
    }
}

} // namespace vantorel::gtk
