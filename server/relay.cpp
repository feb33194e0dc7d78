// Vantorel. MIT licence, see LICENSE.
// The server's output on the shell's log.
#include "server/relay.h"

#include "platform/portable/text.h"

namespace vantorel {

std::optional<std::string> relayLine(std::string_view chunk) {
    if (chunk.empty() || !isValidUtf8(chunk))
        return std::nullopt;
    constexpr std::string_view kPrefix = "🤖 Server: ";
    const std::string_view text = trimWhitespaceAndNewlines(chunk);
    std::string line;
    line.reserve(kPrefix.size() + text.size());
    line.append(kPrefix).append(text);
    return line;
}

} // namespace vantorel
