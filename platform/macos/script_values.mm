// Vantorel. MIT licence, see LICENSE.
// What a page posts, as WebKit hands it over, turned into the seam's value.
#import "platform/macos/script_values.h"

#import "platform/macos/bridge.h"
#include "platform/portable/script_value_limits.h"

namespace vantorel::mac {

namespace {

class Converter {
public:
    ScriptValue convert(id body, std::size_t depth) {
        if (depth > kMaxScriptValueDepth || members_ >= kMaxScriptValueMembers) return {};
        ++members_;
        if ([body isKindOfClass:NSString.class]) return {cutScriptText(toText(body))};
        if ([body isKindOfClass:NSNumber.class]) return number(body);
        if ([body isKindOfClass:NSArray.class]) return list(body, depth);
        if ([body isKindOfClass:NSDictionary.class]) return dictionary(body, depth);
        return {};
    }

private:
    static ScriptValue number(NSNumber* value) {
        // Booleans are numbers too, told apart by their class only.
        if (CFGetTypeID((__bridge CFTypeRef)value) == CFBooleanGetTypeID()) return {static_cast<bool>(value.boolValue)};
        return {value.doubleValue};
    }

    ScriptValue list(NSArray* values, std::size_t depth) {
        ScriptValue::List list;
        for (id value in values) {
            if (members_ >= kMaxScriptValueMembers) break;
            list.push_back(convert(value, depth + 1));
        }
        return {std::move(list)};
    }

    ScriptValue dictionary(NSDictionary* entries, std::size_t depth) {
        ScriptValue::Dictionary dictionary;
        for (id key in entries) {
            if (members_ >= kMaxScriptValueMembers) break;
            if (![key isKindOfClass:NSString.class]) continue;
            dictionary.insert_or_assign(toText(key), convert([entries objectForKey:key], depth + 1));
        }
        return {std::move(dictionary)};
    }

    std::size_t members_ = 0;
};

}  // namespace

ScriptValue toScriptValue(id body) {
    return Converter().convert(body, 0);
}

}  // namespace vantorel::mac
