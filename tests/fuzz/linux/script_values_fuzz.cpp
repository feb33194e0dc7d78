// Vantorel. MIT licence, see LICENSE.
// A page's values, as JSON and as the result of a script, through the engine and the conversion's bounds.
#include "platform/linux/script_values.h"

#include "platform/linux/object.h"
#include "platform/portable/text.h"
#include "tests/fuzz/oracle.h"

#include <algorithm>

using namespace vantorel;

namespace {

struct Measure {
    std::size_t depth = 0;
    std::size_t members = 0;
    std::size_t longTextBytes = 0;
};

constexpr gtk::ScriptValueLimits kLimits{.depth = 3, .members = 20, .textBytes = 600};
constexpr std::size_t kShortText = 256;

void measureText(const std::string& text, Measure& measure) {
    fuzz::check(isValidUtf8(text), "every text is UTF-8");
    measure.longTextBytes += text.size() > kShortText ? text.size() : 0;
}

void measureValue(const ScriptValue& value, std::size_t depth, Measure& measure) {
    measure.depth = std::max(measure.depth, depth);
    if (const std::string* text = value.asText()) {
        measureText(*text, measure);
    } else if (const auto* list = std::get_if<ScriptValue::List>(&value.value)) {
        measure.members += list->size();
        for (const ScriptValue& member : *list) {
            measureValue(member, depth + 1, measure);
        }
    } else if (const auto* dictionary = value.asDictionary()) {
        measure.members += dictionary->size();
        for (const auto& [key, member] : *dictionary) {
            measureText(key, measure);
            measureValue(member, depth + 1, measure);
        }
    }
}

} // namespace

/// The engine's heap is not searched for pointers, so that what only its objects point to looks lost. A leak of our own
/// shows in the memory limit.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() { return "leak:libjavascriptcoregtk-6.0"; }

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static JSCContext* const context = jsc_context_new(); // for the life of the process
    const std::string json(fuzz::textFrom(data, size));
    if (json.find('\0') != std::string::npos || !isValidUtf8(json)) {
        return 0;
    }
    const auto value = gtk::Object<JSCValue>::take(jsc_value_new_from_json(context, json.c_str()));
    jsc_context_clear_exception(context);
    const ScriptValue converted = gtk::scriptValueFrom(value.get(), kLimits);
    fuzz::check(converted == gtk::scriptValueFrom(value.get(), kLimits), "a value converts to the same each time");
    Measure measure;
    measureValue(converted, 0, measure);
    fuzz::check(measure.depth <= kLimits.depth, "no deeper than the limit");
    fuzz::check(measure.members <= kLimits.members, "no more members than the limit");
    fuzz::check(measure.longTextBytes <= kLimits.textBytes, "no more bytes of text than the limit");

    // The input as a text of the page's.
    const auto text = gtk::Object<JSCValue>::take(jsc_value_new_string(context, json.c_str()));
    const ScriptValue convertedText = gtk::scriptValueFrom(text.get(), kLimits);
    const std::string* kept = convertedText.asText();
    fuzz::check(kept != nullptr, "a text stays a text");
    fuzz::check(json.compare(0, kept->size(), *kept) == 0, "and is the beginning of what was posted");
    fuzz::check(kept->size() + 3 >= std::min(json.size(), kLimits.textBytes), "as long as the limit allows");
    return 0;
}
