// Vantorel. MIT licence, see LICENSE.
// The value that a page posts on a script message channel, as the logic sees it.
#pragma once

#include <map>
#include <string>
#include <variant>
#include <vector>

namespace vantorel {

/// A page's value: null (undefined too), Boolean, number, text (UTF-8), list or dictionary with text keys.
/// Backends bound depth and size while they convert; what exceeds the bounds arrives as null in its place, except a
/// text that is too long, which arrives cut at a character's end.
struct ScriptValue {
    using List = std::vector<ScriptValue>;
    using Dictionary = std::map<std::string, ScriptValue, std::less<>>;

    std::variant<std::monostate, bool, double, std::string, List, Dictionary> value;

    /// The dictionary, or null when the value is none.
    const Dictionary* asDictionary() const { return std::get_if<Dictionary>(&value); }
    /// The text, or null when the value is none.
    const std::string* asText() const { return std::get_if<std::string>(&value); }

    friend bool operator==(const ScriptValue&, const ScriptValue&) = default;
};

} // namespace vantorel
