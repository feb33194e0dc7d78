// Vantorel. MIT licence, see LICENSE.
// A flood's bundles, as a page may forge them: what is read is bounded, and stays the same written down and read again.
#include "platform/linux/script_bundle.h"

#include "platform/portable/script_value_limits.h"
#include "platform/portable/text.h"
#include "tests/fuzz/oracle.h"

#include <cmath>

using namespace vantorel;

namespace {

std::string encodedText(const std::string& text) {
    std::size_t units = 0;
    for (const char byte : text) {
        const auto value = static_cast<unsigned char>(byte);
        units += (value & 0xC0U) == 0x80U ? 0 : value >= 0xF0U ? 2 : 1;
    }
    return std::to_string(units) + ":" + text;
}

struct Writer {
    std::size_t values = 0;
    std::size_t deepest = 0;
    bool comparable = true;

    std::string write(const ScriptValue& value, std::size_t depth) {
        ++values;
        deepest = std::max(deepest, depth);
        if (const auto* flag = std::get_if<bool>(&value.value)) {
            return *flag ? "t" : "f";
        }
        if (const auto* number = std::get_if<double>(&value.value)) {
            // A number that is none equals nothing, not even itself.
            comparable = comparable && !std::isnan(*number);
            char digits[64];
            std::snprintf(digits, sizeof digits, "%.17g", *number);
            return std::isinf(*number) ? (*number < 0 ? "n-Infinity;" : "nInfinity;") : "n" + std::string(digits) + ";";
        }
        if (const std::string* text = value.asText()) {
            fuzz::check(isValidUtf8(*text), "every text is UTF-8");
            fuzz::check(text->size() <= kMaxScriptTextBytes, "no text is longer than the limit");
            return "s" + encodedText(*text);
        }
        std::string text;
        if (const auto* list = std::get_if<ScriptValue::List>(&value.value)) {
            for (const ScriptValue& member : *list) {
                text += write(member, depth + 1);
            }
            return "l" + std::to_string(list->size()) + ":" + text;
        }
        if (const auto* dictionary = value.asDictionary()) {
            for (const auto& [key, member] : *dictionary) {
                text += encodedText(key) + write(member, depth + 1);
            }
            return "d" + std::to_string(dictionary->size()) + ":" + text;
        }
        return "z";
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bundle(fuzz::textFrom(data, size));
    if (!isValidUtf8(bundle)) {
        return 0;
    }
    const std::vector<ScriptValue> messages = gtk::messagesFromBundle(bundle);
    Writer writer;
    std::string written;
    for (const ScriptValue& message : messages) {
        written += writer.write(message, 0);
    }
    fuzz::check(writer.values <= gtk::kMaxBundleValues, "no more values than the limit");
    fuzz::check(writer.deepest <= kMaxScriptValueDepth + 1, "no deeper than the limit");
    fuzz::check(!writer.comparable || gtk::messagesFromBundle(written) == messages, "the same when read again");
    return 0;
}
