// Vantorel. MIT licence, see LICENSE.
// The server's port as a text from outside.
#include "app/port.h"

#include <charconv>
#include <system_error>

namespace vantorel {

std::optional<std::int64_t> portFromText(std::string_view text) {
    // std::from_chars knows "-" but not "+".
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-'))
            return std::nullopt;
    }
    std::int64_t port = 0;
    const char* const end = text.data() + text.size();
    const auto [parsedUpTo, error] = std::from_chars(text.data(), end, port);
    if (error != std::errc{} || parsedUpTo != end)
        return std::nullopt;
    return port;
}

} // namespace vantorel
