// Vantorel. MIT licence, see LICENSE.
// How much of a page's value the backends take over: no page can make the shell convert without end.
#pragma once

#include <cstddef>
#include <string>

namespace vantorel {

/// Lists and dictionaries that lie deeper than this are left out.
inline constexpr std::size_t kMaxScriptValueDepth = 16;

/// Values of one message, nested ones included; what comes after them is left out.
inline constexpr std::size_t kMaxScriptValueMembers = 1000;

/// Bytes of one text.
inline constexpr std::size_t kMaxScriptTextBytes = std::size_t{1} << 20U;

/// `text` (valid UTF-8), cut at a character's end when it is longer than kMaxScriptTextBytes. Any thread.
std::string cutScriptText(std::string text);

} // namespace vantorel
