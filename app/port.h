// Vantorel. MIT licence, see LICENSE.
// The server's port as a text from outside.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace vantorel {

/// The integer that the whole of `text` spells in decimal: an optional "+" or "-", then digits only. Nothing for any
/// other text and for values that do not fit 64 bits; no range is checked.
std::optional<std::int64_t> portFromText(std::string_view text);

} // namespace vantorel
