// Vantorel. MIT licence, see LICENSE.
// The second half of the server's start: the child process, its output and its end.
//
// The server is launched once per run of the application. Nothing restarts it.
#include "app/log.h"
#include "app/weakly.h"
#include "server/relay.h"
#include "server/server_launch.h"

namespace vantorel {

namespace {

constexpr double kFirstPageLoadSeconds = 3.0;

const char* asText(bool value) { return value ? "true" : "false"; }

/// Every chunk of the server's output goes to the log, from the platform's reading thread: the window never waits for
/// it.
void relayOutput(FileHandle& output) {
    if (const std::optional<std::string> line = relayLine(output.availableData()))
        logBulk(*line);
}

void createProcess(AppDelegate& app, const ServerPaths& paths) {
    logLine("⚙️ Creating Process object...");
    app.setServerProcess(app.platform().makeProcess());
    const std::shared_ptr<Process> process = app.serverProcess();
    logLine(std::string("⚙️ Process object created: ") + asText(process != nullptr));
    if (process)
        process->setExecutablePath(paths.server);
    logLine("⚙️ Executable URL set: " + (process ? process->executablePath() : std::nullopt).value_or("nil"));
    if (process)
        process->setCurrentDirectoryPath(paths.resources);
    logLine("⚙️ Working directory set: " +
            (process ? process->currentDirectoryPath() : std::nullopt).value_or("nil"));
}

void installHandlers(AppDelegate& app) {
    const std::shared_ptr<Process> process = app.serverProcess();
    const std::shared_ptr<Pipe> pipe = app.platform().makePipe();
    if (process) {
        process->setStandardOutput(pipe);
        process->setStandardError(pipe);
    }
    pipe->fileHandleForReading().setReadabilityHandler(relayOutput);
    if (!process)
        return;

    // Holds the controller strongly: the end of the server is reported in any case.
    process->setTerminationHandler([self = app.shared_from_this()](Process& ended) {
        const std::int32_t status = ended.terminationStatus();
        logLine("🛑 Server process terminated with exit code: " + std::to_string(status));
        if (status == 0)
            return;
        self->platform().mainQueue().async(weakly(self->weak_from_this(), [status](AppDelegate& living) {
            living.updateStatus("❌ Server exited with code " + std::to_string(status), SystemColor::red);
        }));
    });
}

void reportLaunched(AppDelegate& app) {
    logLine("✅ run() returned successfully");
    if (const std::shared_ptr<Process>& process = app.serverProcess()) {
        logLine(std::string("✅ Process is running: ") + asText(process->isRunning()));
        logLine("✅ Process ID: " + std::to_string(process->processIdentifier()));
    } else {
        logLine("❌ serverProcess is nil after run()!");
    }
    logLine("✅ Server process started successfully");
    app.setIsServerRunning(true);
    app.updateStatus("🔄 Server starting... Waiting for connection...", SystemColor::orange);

    // The delay is the whole synchronisation with the server: nothing waits until it listens.
    app.platform().mainQueue().asyncAfter(kFirstPageLoadSeconds,
                                          weakly(app.weak_from_this(), [](AppDelegate& self) { self.loadWebPage(); }));
}

void reportLaunchFailure(AppDelegate& app, const std::string& description) {
    const std::string text = "❌ Failed to start server: " + description;
    logLine(text);
    app.updateStatus(text, SystemColor::red);
    app.showError("Server Start Failed", description);
}

} // namespace

void launchServer(AppDelegate& app, const ServerPaths& paths) {
    createProcess(app, paths);
    logLine("🚀 Launching server from directory: " + paths.resources);
    giveEnvironment(app, paths);
    installHandlers(app);

    logLine("🚀 About to call serverProcess?.run()...");
    logLine("🚀 Calling run() on process...");
    // Without a process nothing is launched, and nothing has failed.
    const std::shared_ptr<Process> process = app.serverProcess();
    if (const std::optional<PlatformError> error = process ? process->run() : std::nullopt) {
        reportLaunchFailure(app, error->localizedDescription);
    } else {
        reportLaunched(app);
    }
}

} // namespace vantorel
