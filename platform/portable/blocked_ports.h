// Vantorel. MIT licence, see LICENSE.
// Ports that web engines refuse to talk to over HTTP.
#pragma once

#include <cstdint>

namespace vantorel {

/// True when `port` is one of the Fetch standard's bad ports. An engine that meets one sends nothing and may show an
/// empty page without reporting a failure. Numbers that are no port at all are not blocked: they fail as addresses.
/// Any thread.
bool isBlockedPort(std::int64_t port);

} // namespace vantorel
