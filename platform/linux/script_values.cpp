// Vantorel. MIT licence, see LICENSE.
// Values that a page posts, as values of the seam.
#include "platform/linux/script_values.h"

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "platform/linux/object.h"

namespace vantorel::gtk {

namespace {

struct StringsFree {
    void operator()(char** strings) const { g_strfreev(strings); }
};
struct BytesFree {
    void operator()(GBytes* bytes) const { g_bytes_unref(bytes); }
};

/// `text` without what goes beyond `limit` bytes; never half a character.
std::string_view cut(std::string_view text, std::size_t limit) {
    if (text.size() <= limit) {
        return text;
    }
    const auto continues = [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; };
    while (limit > 0 && continues(text[limit])) {
        --limit;
    }
    return text.substr(0, limit);
}

class Conversion {
public:
    explicit Conversion(const ScriptValueLimits& limits) : left_(limits) {}

    ScriptValue convert(JSCValue* value) {
        if (value == nullptr) {
            return {};
        }
        if (jsc_value_is_string(value) != 0) {
            return {text(value)};
        }
        if (jsc_value_is_boolean(value) != 0) {
            return {jsc_value_to_boolean(value) != 0};
        }
        if (jsc_value_is_number(value) != 0) {
            return {jsc_value_to_double(value)};
        }
        // In this order: to ask undefined or null whether it is a function throws inside the engine (WebKitGTK 2.50),
        // with a trace of the stack that takes a millisecond.
        if (jsc_value_is_object(value) == 0 || jsc_value_is_function(value) != 0 || left_.depth == 0) {
            return {};
        }
        --left_.depth;
        ScriptValue result = jsc_value_is_array(value) != 0 ? list(value) : dictionary(value);
        ++left_.depth;
        return result;
    }

private:
    static std::size_t length(JSCValue* value) {
        const auto property = Object<JSCValue>::take(jsc_value_object_get_property(value, "length"));
        const double number = jsc_value_to_double(property.get());
        return number > 0 ? static_cast<std::size_t>(number) : 0;
    }

    std::string text(JSCValue* value) {
        const std::size_t limit = std::max(left_.textBytes, kShortText);
        // A code unit is a byte of UTF-8 or more: what lies beyond the limit need not be converted at all.
        Object<JSCValue> part = Object<JSCValue>::share(value);
        if (length(value) > limit) {
            part = Object<JSCValue>::take(jsc_value_object_invoke_method(
                value, "substring", G_TYPE_DOUBLE, 0.0, G_TYPE_DOUBLE, static_cast<double>(limit), G_TYPE_NONE));
        }
        // The conversion to UTF-8 would stop at a lone surrogate.
        part = Object<JSCValue>::take(jsc_value_object_invoke_method(part.get(), "toWellFormed", G_TYPE_NONE));
        // As bytes, for a text may hold NUL.
        const std::unique_ptr<GBytes, BytesFree> bytes(jsc_value_to_string_as_bytes(part.get()));
        gsize size = 0;
        const auto* data = static_cast<const char*>(g_bytes_get_data(bytes.get(), &size));
        const std::string_view kept = cut({data, data == nullptr ? 0 : size}, limit);
        charge(kept.size());
        return std::string(kept);
    }

    /// Short texts are free, so that a long one does not take the room of the members that follow it; their number is
    /// bounded by the members.
    void charge(std::size_t bytes) {
        if (bytes > kShortText) {
            left_.textBytes -= std::min(bytes, left_.textBytes);
        }
    }

    ScriptValue list(JSCValue* value) {
        ScriptValue::List result;
        const std::size_t count = std::min(length(value), left_.members);
        left_.members -= count;
        result.reserve(count);
        for (std::size_t i = 0; i < count; ++i) {
            const auto member =
                Object<JSCValue>::take(jsc_value_object_get_property_at_index(value, static_cast<guint>(i)));
            result.push_back(convert(member.get()));
        }
        return {std::move(result)};
    }

    ScriptValue dictionary(JSCValue* value) {
        ScriptValue::Dictionary result;
        const std::unique_ptr<char*, StringsFree> names(jsc_value_object_enumerate_properties(value));
        for (char** name = names.get(); name != nullptr && *name != nullptr && left_.members > 0; ++name) {
            const std::string_view key = *name;
            --left_.members;
            if (key.size() > std::max(left_.textBytes, kShortText)) {
                continue;
            }
            charge(key.size());
            const auto member = Object<JSCValue>::take(jsc_value_object_get_property(value, *name));
            result.insert_or_assign(std::string(key), convert(member.get()));
        }
        return {std::move(result)};
    }

    static constexpr std::size_t kShortText = 256;

    ScriptValueLimits left_;
};

} // namespace

ScriptValue scriptValueFrom(JSCValue* value, const ScriptValueLimits& limits) {
    return Conversion(limits).convert(value);
}

} // namespace vantorel::gtk
