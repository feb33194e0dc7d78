// Vantorel. MIT licence, see LICENSE.
// The page's console on the shell's log. Records of another shape are dropped without a word.
#include "app/app_delegate.h"
#include "app/log.h"
#include "web/bridge_script.h"

namespace vantorel {

namespace {

const std::string* textMember(const ScriptValue::Dictionary& record, std::string_view name) {
    const auto member = record.find(name);
    return member == record.end() ? nullptr : member->second.asText();
}

std::string_view prefixFor(std::string_view type) {
    if (type == "error")
        return "🔴 JS Error: ";
    if (type == "warn")
        return "🟡 JS Warning: ";
    if (type == "log")
        return "🔵 JS Log: ";
    return "JS: ";
}

} // namespace

void AppDelegate::didReceiveScriptMessage(const std::string& name, const ScriptValue& body) {
    if (name != kConsoleChannel)
        return;
    const ScriptValue::Dictionary* const record = body.asDictionary();
    if (record == nullptr)
        return;
    const std::string* const type = textMember(*record, "type");
    const std::string* const message = textMember(*record, "message");
    if (type == nullptr || message == nullptr)
        return;
    logLine(std::string(prefixFor(*type)).append(*message));
}

} // namespace vantorel
