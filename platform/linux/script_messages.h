// Vantorel. MIT licence, see LICENSE.
// The channels on which a page's scripts post, and the scripts that are put into its frames.
#pragma once

#include <webkit/webkit.h>

#include <string>
#include <vector>

#include "platform/linux/object.h"
#include "platform/linux/script_bundle.h"
#include "platform/linux/web_view_configuration.h"

namespace vantorel::gtk {

/// The engine's side of a user content controller, for one view.
class ScriptMessages {
public:
    explicit ScriptMessages(const GtkUserContentController& content);

    WebKitUserContentManager* manager() const { return manager_.get(); }

private:
    void addScript(const UserScript& script);
    void addHandler(const GtkUserContentController::Handler& handler);

    const std::string bundleMark_ = makeBundleMark();
    Object<WebKitUserContentManager> manager_ =
        Object<WebKitUserContentManager>::take(webkit_user_content_manager_new());
    std::vector<SignalConnection> connections_;
};

} // namespace vantorel::gtk
