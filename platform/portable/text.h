// Vantorel. MIT licence, see LICENSE.
// Text in UTF-8: strict validation, trimming, splitting into lines, joining paths.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vantorel {

// Any thread. Returned views point into the argument and live as long as its bytes do. Arguments are meant to be
// valid UTF-8; in any other text, bytes that spell no character of the set in question are kept as they are.

/// True when `text` is well-formed UTF-8: no overlong form, no surrogate, nothing above U+10FFFF, no half character.
/// A NUL byte is a character like any other; the empty text is valid.
bool isValidUtf8(std::string_view text);

/// `text` without the horizontal blanks at both ends: TAB and Unicode's space separators (general category Zs).
/// Line breaks stay.
std::string_view trimWhitespace(std::string_view text);

/// As `trimWhitespace`, with the line breaks of `splitLines` taken away too.
std::string_view trimWhitespaceAndNewlines(std::string_view text);

/// The pieces between the line breaks LF, VT, FF, CR, NEL (U+0085), U+2028 and U+2029, in order. Each single
/// character breaks, so CR LF leaves an empty piece in between. There is always one piece more than there are breaks.
std::vector<std::string_view> splitLines(std::string_view text);

/// `base` and `component` with exactly one "/" between them and none at the end (the root "/" keeps its own). An empty
/// part adds no separator. Nothing is resolved or checked.
std::string appendPathComponent(std::string_view base, std::string_view component);

} // namespace vantorel
