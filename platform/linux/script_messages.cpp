// Vantorel. MIT licence, see LICENSE.
// The channels on which a page's scripts post, and the scripts that are put into its frames.
#include "platform/linux/script_messages.h"

#include <memory>
#include <string>

#include "platform/linux/script_values.h"

namespace vantorel::gtk {

namespace {

struct UserScriptUnref {
    void operator()(WebKitUserScript* script) const { webkit_user_script_unref(script); }
};

WebKitUserScriptInjectionTime engineTime(UserScriptInjectionTime time) {
    switch (time) {
    case UserScriptInjectionTime::atDocumentStart:
        return WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_START;
    case UserScriptInjectionTime::atDocumentEnd:
        return WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_END;
    }
    return WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_START;
}

} // namespace

ScriptMessages::ScriptMessages(const GtkUserContentController& content) {
    for (const GtkUserContentController::Handler& handler : content.handlers()) {
        addHandler(handler);
    }
    for (const UserScript& script : content.scripts()) {
        addScript(script);
    }
}

void ScriptMessages::addScript(const UserScript& script) {
    const std::unique_ptr<WebKitUserScript, UserScriptUnref> userScript(webkit_user_script_new(
        script.source.c_str(),
        script.forMainFrameOnly ? WEBKIT_USER_CONTENT_INJECT_TOP_FRAME : WEBKIT_USER_CONTENT_INJECT_ALL_FRAMES,
        engineTime(script.injectionTime), nullptr, nullptr));
    webkit_user_content_manager_add_script(manager_.get(), userScript.get());
}

void ScriptMessages::addHandler(const GtkUserContentController::Handler& handler) {
    // Connected before the name is registered, as the engine's documentation asks, lest a message is lost.
    connections_.push_back(connect<void(JSCValue*)>(
        manager_.get(), ("script-message-received::" + handler.name).c_str(), [handler](JSCValue* value) {
            if (const auto receiver = handler.handler.lock()) {
                receiver->didReceiveScriptMessage(handler.name, scriptValueFrom(value));
            }
        }));
    webkit_user_content_manager_register_script_message_handler(manager_.get(), handler.name.c_str(), nullptr);
}

} // namespace vantorel::gtk
