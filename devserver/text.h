// Vantorel. MIT licence, see LICENSE.
// The development server's small text rules: what may be printed, and which hosts and origins count as loopback.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vantorel::devserver {

/// The longest text, in bytes, that `printable` keeps of its input.
inline constexpr std::size_t kPrintedBytes = 4096;

/// `text` with A to Z in lower case; every other byte as it is.
std::string asciiLower(std::string_view text);

/// `text` made safe for one log line: control characters as \n, \r, \t or \xNN, and what is longer than `kPrintedBytes`
/// cut at a whole UTF-8 character, with the full length told at the end.
std::string printable(std::string_view text);

/// Whether a Host header names this machine's loopback: localhost, 127.0.0.1 or [::1], with or without a port. It keeps
/// a foreign name that was pointed at 127.0.0.1 from reading the page.
bool isLoopbackHost(std::string_view host);

/// Whether an Origin header is http:// or https:// and a loopback host. An empty text and "null" are not.
bool isLoopbackOrigin(std::string_view origin);

} // namespace vantorel::devserver
