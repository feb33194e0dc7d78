// Vantorel. MIT licence, see LICENSE.
// What the development server is told by the shell: the three environment variables, read and judged. No toolkit here.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace vantorel::devserver {

/// The port used when WEBSOCKET_PORT is not set.
inline constexpr std::uint16_t kDefaultPort = 8080;

/// The server's settings, all of them valid.
struct Settings {
    bool websocketEnabled = true;       ///< WEBSOCKET_ENABLED: whether /ws takes connections.
    std::uint16_t port = kDefaultPort;  ///< WEBSOCKET_PORT: 1 to 65535, for the page and the socket alike.
    bool nativeHotkeysDisabled = false; ///< DISABLE_NATIVE_HOTKEYS: only shown, this server grabs no keys anyway.

    friend bool operator==(const Settings&, const Settings&) = default;
};

/// Why the settings can't be used: one sentence for a person, without a line break.
struct SettingsProblem {
    std::string text;
};

/// Gives a variable's value, or nothing when it is not set.
using VariableLookup = std::function<std::optional<std::string>(std::string_view name)>;

/// Reads the three variables through `lookup`. An absent variable gives its default, and so does an empty one; a value
/// that is neither is a problem, never a guess. Booleans are true/1/yes/on and false/0/no/off in any ASCII case.
std::variant<Settings, SettingsProblem> readSettings(const VariableLookup& lookup);

/// The lookup that reads this process's environment. Not to be used while another thread changes it.
VariableLookup environmentLookup();

} // namespace vantorel::devserver
