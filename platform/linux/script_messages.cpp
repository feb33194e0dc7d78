// Vantorel. MIT licence, see LICENSE.
// The channels on which a page's scripts post, and the scripts that are put into its frames.
#include "platform/linux/script_messages.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/linux/message_guard.h"
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

/// Far more than the guard puts into one bundle.
constexpr std::size_t kLongestBundle = std::size_t{8} << 20U;

/// Calls `receive` for `value`, or for each of the messages in it when it is a bundle of the guard's, by its mark.
void forEachMessage(JSCValue* value, std::string_view mark, const std::function<void(const ScriptValue&)>& receive) {
    if (jsc_value_is_string(value) != 0) {
        const ScriptValue begin = scriptValueFrom(value, {.textBytes = mark.size()});
        if (begin.asText()->starts_with(mark)) {
            const ScriptValue bundle = scriptValueFrom(value, {.textBytes = kLongestBundle});
            for (const ScriptValue& message :
                 messagesFromBundle(std::string_view(*bundle.asText()).substr(mark.size()))) {
                receive(message);
            }
            return;
        }
    }
    receive(scriptValueFrom(value));
}

} // namespace

ScriptMessages::ScriptMessages(const GtkUserContentController& content) {
    for (const GtkUserContentController::Handler& handler : content.handlers()) {
        addHandler(handler);
        UserScript guard;
        guard.source = messageGuardScript(handler.name, bundleMark_);
        guard.forMainFrameOnly = false;
        addScript(guard);
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
    const auto receive = [handler, mark = bundleMark_](JSCValue* value) {
        forEachMessage(value, mark, [&handler](const ScriptValue& message) {
            if (const auto receiver = handler.handler.lock()) {
                receiver->didReceiveScriptMessage(handler.name, message);
            }
        });
    };
    // Connected before the name is registered, as the engine's documentation asks, lest a message is lost.
    connections_.push_back(
        connect<void(JSCValue*)>(manager_.get(), ("script-message-received::" + handler.name).c_str(), receive));
    webkit_user_content_manager_register_script_message_handler(manager_.get(), handler.name.c_str(), nullptr);
}

} // namespace vantorel::gtk
