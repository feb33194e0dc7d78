// Vantorel. MIT licence, see LICENSE.
// Many messages in one text: the form in which a flood of them leaves a page.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "platform/script_value.h"

namespace vantorel::gtk {

/// What a bundle begins with.
inline constexpr std::string_view kBundleMark = "vantorel messages\n";

/// Values of one bundle, nested ones included: more than 64 KiB of text and one message beyond can spell.
inline constexpr std::size_t kMaxBundleValues = 100'000;

/// The messages of `bundle`, which is UTF-8. After the mark come values, one after the other: "z" null, "t" and "f"
/// Booleans, "n1.5;" a number, "s3:abc" a text with its length in UTF-16 code units, "l2:" a list of two values, "d1:"
/// a dictionary of one key, written as a text without its "s", and value. Reading ends at the first character that fits
/// none of these, or at the limit; the messages before it count.
std::vector<ScriptValue> messagesFromBundle(std::string_view bundle);

} // namespace vantorel::gtk
