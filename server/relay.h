// Vantorel. MIT licence, see LICENSE.
// The server's output on the shell's log.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vantorel {

/// The log entry for one chunk of output: the prefix and the chunk without blanks and line breaks at its ends, inner
/// line breaks kept. Nothing for an empty chunk and for one that is not valid UTF-8 by itself.
std::optional<std::string> relayLine(std::string_view chunk);

} // namespace vantorel
