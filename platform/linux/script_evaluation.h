// Vantorel. MIT licence, see LICENSE.
// Scripts that the application runs in the page.
#pragma once

#include <webkit/webkit.h>

#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <string>

#include "platform/platform_error.h"

namespace vantorel::gtk {

/// The evaluations of one view. Main thread.
class ScriptEvaluations {
public:
    using Completion = std::function<void(const std::optional<PlatformError>&)>;

    ScriptEvaluations() = default;
    ScriptEvaluations(const ScriptEvaluations&) = delete;
    ScriptEvaluations& operator=(const ScriptEvaluations&) = delete;
    /// Evaluations that are still under way complete with an error, later: the engine tells nothing about a script that
    /// runs without end.
    ~ScriptEvaluations();

    /// Runs `script` in the global scope of the view's page. `completion` comes once, later, also when the page's
    /// process ends meanwhile. What the script's last statement gives is left in the page.
    void evaluate(WebKitWebView* view, const std::string& script, Completion completion);

private:
    /// Empty when it has been called.
    using Pending = std::shared_ptr<Completion>;

    static void completed(GObject* source, GAsyncResult* result, gpointer data);

    std::list<Pending> pending_;
};

} // namespace vantorel::gtk
