// Vantorel. MIT licence, see LICENSE.
// The address of the server's page.
#pragma once

#include <cstdint>
#include <string>

namespace vantorel {

/// The server's root on the loopback host. Any port gives a text; whether it can be loaded is the platform's judgement.
inline std::string pageAddress(std::int64_t port) { return "http://localhost:" + std::to_string(port) + "/"; }

} // namespace vantorel
