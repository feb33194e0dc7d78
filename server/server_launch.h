// Vantorel. MIT licence, see LICENSE.
// The two halves of the server's start, as startGoServer runs them.
#pragma once

#include <optional>
#include <string>

#include "app/app_delegate.h"

namespace vantorel {

/// Where the server and what belongs to it lie: plain texts, not resolved.
struct ServerPaths {
    std::string bundle;
    std::string resources;
    std::string server;
    std::string envFile;
};

/// The paths inside the bundle at `bundlePath`.
ServerPaths serverPathsIn(const std::string& bundlePath);

/// First half: reports what is there and makes the server executable. Nothing when there is no server; it has been
/// reported then.
std::optional<ServerPaths> prepareServer(AppDelegate& app);

/// Composes the server's environment, gives it to the process and logs the fixed part of it.
void giveEnvironment(AppDelegate& app, const ServerPaths& paths);

/// Second half: makes the process, launches it and reports the outcome; schedules the first page load.
void launchServer(AppDelegate& app, const ServerPaths& paths);

} // namespace vantorel
