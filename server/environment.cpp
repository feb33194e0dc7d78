// Vantorel. MIT licence, see LICENSE.
// The environment that the server runs with.
#include "server/environment.h"

#include "server/env_file.h"

namespace vantorel {

Environment composeServerEnvironment(Environment inherited, const std::optional<std::string>& envFileText,
                                     std::int64_t port) {
    Environment environment = std::move(inherited);
    if (envFileText) {
        for (auto& [key, value] : parseEnvText(*envFileText))
            environment.insert_or_assign(std::move(key), std::move(value));
    }
    environment.insert_or_assign("WEBSOCKET_ENABLED", "true");
    environment.insert_or_assign("WEBSOCKET_PORT", std::to_string(port));
    environment.insert_or_assign("DISABLE_NATIVE_HOTKEYS", "true");
    return environment;
}

} // namespace vantorel
