// Vantorel. MIT licence, see LICENSE.
// The environment that the server runs with.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/foundation.h"

namespace vantorel {

/// `inherited`, overlaid with the entries of `envFileText` (none when there is no such text), overlaid with the three
/// variables that the shell fixes: WEBSOCKET_ENABLED, WEBSOCKET_PORT, DISABLE_NATIVE_HOTKEYS.
Environment composeServerEnvironment(Environment inherited, const std::optional<std::string>& envFileText,
                                     std::int64_t port);

} // namespace vantorel
