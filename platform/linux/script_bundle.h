// Vantorel. MIT licence, see LICENSE.
// Many messages in one text: the form in which a flood of them leaves a page.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/script_value.h"

namespace vantorel::gtk {

/// A new mark, for bundles to begin with: no page can guess it, so no text of a page's own passes for a bundle. ASCII,
/// without a character that a script's text would have to escape.
std::string makeBundleMark();

/// Values of one bundle, nested ones included: more than 64 KiB of text and one message beyond can spell.
inline constexpr std::size_t kMaxBundleValues = 100'000;

/// The messages of `bundle`, a bundle without its mark, which is UTF-8: values, one after the other. "z" is null, "t"
/// and "f" are Booleans, "n1.5;" a number, "s3:abc" a text with its length in UTF-16 code units, "l2:" a list of two
/// values, "d1:" a dictionary of one key, written as a text without its "s", and value. Reading ends at the first
/// character that fits none of these, or at the limit; the messages before it count.
std::vector<ScriptValue> messagesFromBundle(std::string_view bundle);

} // namespace vantorel::gtk
