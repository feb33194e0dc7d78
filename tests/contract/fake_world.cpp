// Vantorel. MIT licence, see LICENSE.
// The world of the fake platform: children, servers and scripts are played on its clock.
#include <algorithm>
#include <chrono>
#include <csignal>
#include <map>
#include <memory>
#include <utility>

#include "tests/contract/world.h"
#include "tests/unit/fake/fake_platform.h"

namespace vantorel::contract {
namespace {

using fake::FakeLoop;
using fake::FakePlatform;
using fake::FakeProcess;
using fake::FakeUrlSession;

/// How long the played surroundings take for anything, in seconds of the fake's clock.
constexpr double kMoment = 0.001;

/// Does a child's steps, one after the other.
class ChildPlayer : public std::enable_shared_from_this<ChildPlayer> {
public:
    ChildPlayer(FakeLoop& loop, FakeProcess& process, std::vector<ChildStep> steps)
        : loop_(loop),
          process_(process),
          steps_(std::move(steps)) {}

    void start() {
        process_.onTerminate = [self = shared_from_this()](FakeProcess&) { self->terminationRequested(); };
        continueAfter(kMoment);
    }

private:
    void continueAfter(double seconds) {
        loop_.after(seconds, [self = shared_from_this()] { self->play(); });
    }

    void play() {
        while (!ended_ && next_ < steps_.size()) {
            const ChildStep& step = steps_[next_++];
            if (!perform(step))
                return;
        }
        end(0);
    }

    /// False when the child goes on later, or never.
    bool perform(const ChildStep& step) {
        const int whole = static_cast<int>(step.number);
        switch (step.kind) {
        case ChildStep::Kind::printOutput:
            return process_.writeOutput(step.text), true;
        case ChildStep::Kind::printError:
            return process_.writeError(step.text), true;
        case ChildStep::Kind::printMany:
            return process_.writeOutput(std::string(static_cast<std::size_t>(whole), 'x')), true;
        case ChildStep::Kind::printEnvironment:
            for (const auto& [name, value] : process_.childEnvironment()) {
                process_.writeOutput(name + "=" + value + "\n");
            }
            return true;
        case ChildStep::Kind::printWorkingDirectory:
            return process_.writeOutput(process_.currentDirectoryPath().value_or("")), true;
        case ChildStep::Kind::pause:
            return continueAfter(step.number), false;
        case ChildStep::Kind::exit:
            return end(whole), false;
        case ChildStep::Kind::raise:
            return end(whole), false;
        case ChildStep::Kind::ignoreTermination:
            return ignoring_ = true;
        case ChildStep::Kind::exitOnTermination:
            terminationStatus_ = whole;
            process_.writeOutput("ready");
            return false;
        case ChildStep::Kind::waitForever:
            return false;
        }
        return false;
    }

    void terminationRequested() {
        if (ignoring_)
            return;
        loop_.after(kMoment, [self = shared_from_this()] { self->end(self->terminationStatus_); });
    }

    void end(int status) {
        if (std::exchange(ended_, true))
            return;
        process_.standardOutput()->end();
        if (process_.standardError() != process_.standardOutput())
            process_.standardError()->end();
        process_.end(status);
    }

    FakeLoop& loop_;
    FakeProcess& process_;
    std::vector<ChildStep> steps_;
    std::size_t next_ = 0;
    bool ignoring_ = false;
    bool ended_ = false;
    int terminationStatus_ = SIGTERM;
};

class FakeWorld final : public World {
public:
    FakeWorld() {
        platform_.files.addDirectory(folder());
        platform_.onMakeProcess = [this](FakeProcess& process) {
            process.onLaunch = [this](FakeProcess& launched) {
                const auto program = programs_.find(launched.executablePath().value());
                if (program == programs_.end())
                    return;
                std::make_shared<ChildPlayer>(platform_.loop, launched, program->second)->start();
            };
        };
        platform_.http.onResume = [this](std::size_t index) { answerLater(index); };
        platform_.onMakeWebView = [this](fake::FakeWebView& view) {
            view.onEvaluate = [this, &view](std::size_t index) {
                const bool throws = view.scripts()[index].starts_with("throw ");
                platform_.loop.after(kMoment, [&view, index, throws] {
                    view.complete(index, throws ? std::optional(fake::makeError("exception")) : std::nullopt);
                });
            };
        };
    }

    ~FakeWorld() override {
        for (std::thread& thread : globalThreads_)
            thread.join();
        EXPECT_THAT(platform_.recorder.violations(), ::testing::IsEmpty());
    }

    Platform& platform() override { return platform_; }

    bool runUntil(const std::function<bool()>& condition, double seconds) override {
        const double end = now() + seconds;
        for (;;) {
            while (platform_.loop.pendingGlobalBlocks() > 0) {
                globalThreads_.push_back(platform_.loop.startGlobalBlock());
            }
            platform_.runMainQueue();
            if (condition())
                return true;
            if (now() >= end)
                return false;
            // Blocks of the global queue run on real threads; the fake's clock must not run away from them.
            if (!globalThreads_.empty())
                std::this_thread::sleep_for(std::chrono::microseconds(200));
            platform_.advance(std::min(0.01, end - now()));
        }
    }

    double now() override { return platform_.loop.now(); }

    std::string folder() override { return "/contract"; }
    void makeFile(const std::string& path, const std::string& bytes, unsigned mode) override {
        platform_.files.addFile(path, bytes, mode);
    }
    void makeLink(const std::string& path, const std::string& target) override {
        platform_.files.addLink(path, target);
    }
    unsigned modeOf(const std::string& path) override { return platform_.files.mode(path); }
    std::string makeProgram(const std::vector<ChildStep>& steps) override {
        const std::string path = folder() + "/program" + std::to_string(programs_.size());
        platform_.files.addFile(path, "#!/bin/sh\n" + shellScript(steps), 0755);
        programs_[path] = steps;
        return path;
    }

    int serve(const ServerBehaviour& behaviour) override {
        const int port = kFirstPort + static_cast<int>(servers_.size());
        servers_[port] = behaviour;
        return port;
    }
    int closedPort() override { return 1; }
    int requestCount() override { return requestCount_; }

    void resizeContent(Window& window, Size size) override {
        dynamic_cast<fake::FakeWindow&>(window).resizeContent(size);
    }

private:
    static constexpr int kFirstPort = 20'000;

    void answerLater(std::size_t index) {
        const UrlRequest& request = platform_.http.request(index);
        const int port = std::stoi(request.address.substr(request.address.rfind(':') + 1));
        const auto server = servers_.find(port);
        UrlResult result = FakeUrlSession::failure("refused");
        double delay = kMoment;
        if (server != servers_.end()) {
            ++requestCount_;
            const ServerBehaviour& behaviour = server->second;
            if (!behaviour.status || behaviour.endlessBody) {
                delay = request.timeoutSeconds;
                result = FakeUrlSession::failure("timed out");
            } else if (behaviour.garbage) {
                result = UrlResult{};
            } else {
                result = FakeUrlSession::status(*behaviour.status);
            }
        }
        platform_.loop.after(delay, [this, index, result] { platform_.http.answer(index, result); });
    }

    FakePlatform platform_;
    std::map<std::string, std::vector<ChildStep>> programs_;
    std::map<int, ServerBehaviour> servers_;
    int requestCount_ = 0;
    std::vector<std::thread> globalThreads_;
};

} // namespace

std::unique_ptr<World> makeWorld() { return std::make_unique<FakeWorld>(); }

} // namespace vantorel::contract
