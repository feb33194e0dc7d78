// Vantorel. MIT licence, see LICENSE.
// The development server's pure parts: settings from variables, printable text, loopback hosts and origins.
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <utility>
#include <variant>

#include "devserver/settings.h"
#include "devserver/text.h"

namespace vantorel::devserver {
namespace {

std::variant<Settings, SettingsProblem> read(std::map<std::string, std::string, std::less<>> variables) {
    return readSettings([variables = std::move(variables)](std::string_view name) -> std::optional<std::string> {
        const auto found = variables.find(name);
        if (found == variables.end())
            return std::nullopt;
        return found->second;
    });
}

Settings good(std::map<std::string, std::string, std::less<>> variables) {
    const auto outcome = read(std::move(variables));
    const auto* const problem = std::get_if<SettingsProblem>(&outcome);
    EXPECT_EQ(problem, nullptr) << problem->text;
    return problem == nullptr ? std::get<Settings>(outcome) : Settings{};
}

std::string problemOf(std::map<std::string, std::string, std::less<>> variables) {
    const auto outcome = read(std::move(variables));
    const auto* const problem = std::get_if<SettingsProblem>(&outcome);
    return problem == nullptr ? "" : problem->text;
}

TEST(DevserverSettings, DefaultsWhenNothingIsSet) { EXPECT_EQ(good({}), (Settings{true, 8080, false})); }

TEST(DevserverSettings, EmptyValuesCountAsAbsent) {
    EXPECT_EQ(good({{"WEBSOCKET_ENABLED", ""}, {"WEBSOCKET_PORT", ""}, {"DISABLE_NATIVE_HOTKEYS", ""}}), Settings{});
}

TEST(DevserverSettings, ReadsWhatTheShellGives) {
    EXPECT_EQ(good({{"WEBSOCKET_ENABLED", "true"}, {"WEBSOCKET_PORT", "9090"}, {"DISABLE_NATIVE_HOTKEYS", "true"}}),
              (Settings{true, 9090, true}));
}

TEST(DevserverSettings, BooleansInOtherWords) {
    for (const char* const yes : {"1", "yes", "ON", "True"})
        EXPECT_TRUE(good({{"WEBSOCKET_ENABLED", yes}}).websocketEnabled);
    for (const char* const no : {"0", "no", "OFF", "False"})
        EXPECT_FALSE(good({{"WEBSOCKET_ENABLED", no}}).websocketEnabled);
}

TEST(DevserverSettings, PortsAtTheEdges) {
    EXPECT_EQ(good({{"WEBSOCKET_PORT", "1"}}).port, 1);
    EXPECT_EQ(good({{"WEBSOCKET_PORT", "65535"}}).port, 65535);
}

TEST(DevserverSettings, BadPortsAreNamedNotGuessed) {
    for (const char* const port : {"0", "-1", "65536", "70000", "80x", " 80", "+80", "99999999999999999999", "1e3"}) {
        EXPECT_EQ(problemOf({{"WEBSOCKET_PORT", port}}),
                  std::string("WEBSOCKET_PORT must be a port from 1 to 65535, not \"") + port + '"');
    }
}

TEST(DevserverSettings, BadBooleansAreNamedNotGuessed) {
    EXPECT_EQ(problemOf({{"WEBSOCKET_ENABLED", "maybe"}}), "WEBSOCKET_ENABLED must be true or false, not \"maybe\"");
    EXPECT_EQ(problemOf({{"DISABLE_NATIVE_HOTKEYS", "2"}}), "DISABLE_NATIVE_HOTKEYS must be true or false, not \"2\"");
}

TEST(DevserverSettings, AProblemStaysOnOneLine) {
    EXPECT_EQ(problemOf({{"WEBSOCKET_PORT", "8\n0"}}), "WEBSOCKET_PORT must be a port from 1 to 65535, not \"8\\n0\"");
}

TEST(DevserverText, PrintableKeepsTextAndEscapesControls) {
    EXPECT_EQ(printable("{\"type\":\"x\"} é 🎉"), "{\"type\":\"x\"} é 🎉");
    EXPECT_EQ(printable("a\nb\rc\td\x1b[0m\x7f"), "a\\nb\\rc\\td\\x1b[0m\\x7f");
    EXPECT_EQ(printable(std::string_view("\0", 1)), "\\x00");
    EXPECT_EQ(printable(""), "");
}

TEST(DevserverText, PrintableCutsAtAWholeCharacter) {
    const std::string exact(kPrintedBytes, 'a');
    EXPECT_EQ(printable(exact), exact);
    const std::string start(kPrintedBytes - 1, 'a');
    EXPECT_EQ(printable(start + "éé"), start + "… (" + std::to_string(kPrintedBytes + 3) + " bytes)");
}

TEST(DevserverText, LoopbackHosts) {
    for (const char* const host : {"localhost", "LOCALHOST:8080", "127.0.0.1", "127.0.0.1:1", "[::1]", "[::1]:65535"}) {
        EXPECT_TRUE(isLoopbackHost(host)) << host;
    }
    for (const char* const host : {"", "localhost.example", "localhost:", "localhost:80x", "localhost:123456",
                                   "127.0.0.10", "127.0.0.1.example:80", "example", "::1", "[::1]x", "xlocalhost"}) {
        EXPECT_FALSE(isLoopbackHost(host)) << host;
    }
}

TEST(DevserverText, LoopbackOrigins) {
    for (const char* const origin : {"http://localhost:8080", "https://127.0.0.1", "HTTP://[::1]:80"}) {
        EXPECT_TRUE(isLoopbackOrigin(origin)) << origin;
    }
    for (const char* const origin : {"", "null", "localhost", "file://localhost", "http://example", "http://",
                                     "http://localhost@example", "http://localhost:80/path"}) {
        EXPECT_FALSE(isLoopbackOrigin(origin)) << origin;
    }
}

} // namespace
} // namespace vantorel::devserver
