// Vantorel. MIT licence, see LICENSE.
// The first half of the server's start: where it is, whether it can run, and what it runs with.
#include "app/log.h"
#include "platform/portable/text.h"
#include "server/environment.h"
#include "server/server_launch.h"

namespace vantorel {

namespace {

const std::string kRule(40, '=');

void logPaths(const ServerPaths& paths) {
    logLine("📁 App bundle: " + paths.bundle);
    logLine("📁 Resources path: " + paths.resources);
    logLine("📁 Server path: " + paths.server);
    logLine("📁 .env path: " + paths.envFile);
}

void reportMissingServer(AppDelegate& app, const ServerPaths& paths) {
    app.updateStatus("❌ Server binary not found at: " + paths.server, SystemColor::red);
    app.showError("Server binary not found", "Please rebuild the application with the Go server included.");
}

} // namespace

ServerPaths serverPathsIn(const std::string& bundlePath) {
    ServerPaths paths;
    paths.bundle = bundlePath;
    paths.resources = appendPathComponent(bundlePath, "Contents/Resources");
    paths.server = appendPathComponent(paths.resources, "vantor-srv");
    paths.envFile = appendPathComponent(paths.resources, ".env");
    return paths;
}

void AppDelegate::startGoServer() {
    if (const std::optional<ServerPaths> paths = prepareServer(*this))
        launchServer(*this, *paths);
}

std::optional<ServerPaths> prepareServer(AppDelegate& app) {
    logLine("\n" + kRule);
    logLine("🔴 ENTERING startGoServer() method");
    logLine(kRule + "\n");
    app.updateStatus("🔄 Starting Go server...", SystemColor::orange);

    const ServerPaths paths = serverPathsIn(app.platform().mainBundle().bundlePath());
    logPaths(paths);

    FileManager& files = app.platform().fileManager();
    if (!files.fileExists(paths.server)) {
        reportMissingServer(app, paths);
        return std::nullopt;
    }
    if (files.fileExists(paths.envFile)) {
        logLine("✅ .env file found (will be loaded into environment)");
    } else {
        logLine("⚠️ Warning: .env file not found at: " + paths.envFile);
    }
    constexpr unsigned kExecutableMode = 0755;
    if (const auto error = files.setPosixPermissions(paths.server, kExecutableMode)) {
        // The launch is tried all the same; a file that cannot run is reported there.
        logLine("⚠️ Warning: Could not set executable permissions: " + error->description);
    }
    return paths;
}

void giveEnvironment(AppDelegate& app, const ServerPaths& paths) {
    Environment inherited = app.platform().processInfo().environment();
    // Looked for again: a file that appeared since the first look counts.
    const FileManager& files = app.platform().fileManager();
    const std::optional<std::string> envFileText =
        files.fileExists(paths.envFile) ? files.readUtf8File(paths.envFile) : std::nullopt;
    const Environment environment = composeServerEnvironment(std::move(inherited), envFileText, app.websocketPort());
    if (app.serverProcess())
        app.serverProcess()->setEnvironment(environment);
    logLine("🌍 Environment: WEBSOCKET_ENABLED=true, WEBSOCKET_PORT=" + std::to_string(app.websocketPort()) +
            ", DISABLE_NATIVE_HOTKEYS=true");
}

} // namespace vantorel
