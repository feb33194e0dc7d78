// Vantorel. MIT licence, see LICENSE.
// Reading the development server's three environment variables.
#include "devserver/settings.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>

#include "devserver/text.h"

namespace vantorel::devserver {
namespace {

constexpr std::array<std::string_view, 4> kYes = {"true", "1", "yes", "on"};
constexpr std::array<std::string_view, 4> kNo = {"false", "0", "no", "off"};

std::optional<bool> parseBoolean(std::string_view text) {
    const std::string lower = asciiLower(text);
    if (std::find(kYes.begin(), kYes.end(), lower) != kYes.end())
        return true;
    if (std::find(kNo.begin(), kNo.end(), lower) != kNo.end())
        return false;
    return std::nullopt;
}

std::optional<std::uint16_t> parsePort(std::string_view text) {
    std::uint16_t port = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, port);
    if (error != std::errc{} || stop != end || port == 0)
        return std::nullopt;
    return port;
}

std::string complaint(std::string_view name, std::string_view expected, std::string_view value) {
    return std::string(name) + " must be " + std::string(expected) + ", not \"" + printable(value) + '"';
}

} // namespace

std::variant<Settings, SettingsProblem> readSettings(const VariableLookup& lookup) {
    Settings settings;
    const auto readBoolean = [&lookup](std::string_view name, bool& field) -> std::optional<SettingsProblem> {
        const std::optional<std::string> value = lookup(name);
        if (!value || value->empty())
            return std::nullopt;
        const std::optional<bool> parsed = parseBoolean(*value);
        if (!parsed)
            return SettingsProblem{complaint(name, "true or false", *value)};
        field = *parsed;
        return std::nullopt;
    };

    if (auto problem = readBoolean("WEBSOCKET_ENABLED", settings.websocketEnabled))
        return *std::move(problem);
    if (auto problem = readBoolean("DISABLE_NATIVE_HOTKEYS", settings.nativeHotkeysDisabled)) {
        return *std::move(problem);
    }
    if (const std::optional<std::string> value = lookup("WEBSOCKET_PORT"); value && !value->empty()) {
        const std::optional<std::uint16_t> port = parsePort(*value);
        if (!port)
            return SettingsProblem{complaint("WEBSOCKET_PORT", "a port from 1 to 65535", *value)};
        settings.port = *port;
    }
    return settings;
}

VariableLookup environmentLookup() {
    return [](std::string_view name) -> std::optional<std::string> {
        const char* const value = std::getenv(std::string(name).c_str());
        if (value == nullptr)
            return std::nullopt;
        return std::string(value);
    };
}

} // namespace vantorel::devserver
