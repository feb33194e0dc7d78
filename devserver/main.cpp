// Vantorel. MIT licence, see LICENSE.
// The development server's entry point: settings, signals, main loop and exit status.
#include <glib-unix.h>

#include <csignal>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <variant>

#include "devserver/output.h"
#include "devserver/server.h"
#include "devserver/settings.h"

namespace {

using namespace vantorel::devserver;

struct LoopUnref {
    void operator()(GMainLoop* loop) const noexcept { g_main_loop_unref(loop); }
};

struct Run {
    GMainLoop* loop = nullptr;
    Server* server = nullptr;
    bool stopping = false;
};

// The first signal stops cleanly; a second one doesn't wait for the clients.
gboolean onStopSignal(gpointer data) {
    auto* const run = static_cast<Run*>(data);
    if (run->stopping) {
        g_main_loop_quit(run->loop);
        return G_SOURCE_CONTINUE;
    }
    run->stopping = true;
    printLine("vantor-srv: stopping");
    run->server->stop([loop = run->loop] { g_main_loop_quit(loop); });
    return G_SOURCE_CONTINUE;
}

std::string describe(const Settings& settings) {
    const auto text = [](bool value) { return value ? "true" : "false"; };
    return std::string("vantor-srv: WEBSOCKET_ENABLED=") + text(settings.websocketEnabled) +
           ", WEBSOCKET_PORT=" + std::to_string(settings.port) +
           ", DISABLE_NATIVE_HOTKEYS=" + text(settings.nativeHotkeysDisabled);
}

} // namespace

int main() {
    survivePipeLoss();
    const auto outcome = readSettings(environmentLookup());
    if (const auto* const problem = std::get_if<SettingsProblem>(&outcome)) {
        printError(problem->text);
        return EXIT_FAILURE;
    }
    const Settings settings = std::get<Settings>(outcome);

    const std::unique_ptr<GMainLoop, LoopUnref> loop(g_main_loop_new(nullptr, FALSE));
    Server server(settings);
    Run run{loop.get(), &server, false};
    for (const int signalNumber : {SIGTERM, SIGINT})
        g_unix_signal_add(signalNumber, onStopSignal, &run);

    printLine(describe(settings));
    if (const std::optional<std::string> problem = server.start()) {
        printError(*problem);
        return EXIT_FAILURE;
    }
    printLine("vantor-srv: serving http://localhost:" + std::to_string(settings.port) + "/");
    g_main_loop_run(loop.get());
    return EXIT_SUCCESS;
}
