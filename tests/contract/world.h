// Vantorel. MIT licence, see LICENSE.
// What a contract case needs besides the platform: time that passes, programs, files and a server to talk to.
//
// The same cases run over each platform. What they may assume is in the headers of platform/ and here, nothing else.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "platform/platform.h"
#include "tests/contract/child_step.h"

namespace vantorel::contract {

/// How a server answers every request.
struct ServerBehaviour {
    /// None: the request is taken and never answered.
    std::optional<int> status = 200;
    /// The answer's body is begun and never ended.
    bool endlessBody = false;
    /// The answer is not HTTP.
    bool garbage = false;
};

class World {
public:
    virtual ~World() = default;

    virtual Platform& platform() = 0;
    /// Lets the platform work, on the main thread, until `condition` holds: true then, false after `seconds`.
    virtual bool runUntil(const std::function<bool()>& condition, double seconds) = 0;
    /// The clock that timers and delays go by, in seconds.
    virtual double now() = 0;

    /// An empty folder of this world; real paths only.
    virtual std::string folder() = 0;
    virtual void makeFile(const std::string& path, const std::string& bytes, unsigned mode) = 0;
    virtual void makeLink(const std::string& path, const std::string& target) = 0;
    virtual unsigned modeOf(const std::string& path) = 0;
    /// Makes an executable file that does `steps`; gives its path.
    virtual std::string makeProgram(const std::vector<ChildStep>& steps) = 0;

    /// Starts a server on the loopback host; gives its port.
    virtual int serve(const ServerBehaviour& behaviour) = 0;
    /// A port that nobody listens on.
    virtual int closedPort() = 0;
    /// How many requests the servers of this world have got.
    virtual int requestCount() = 0;

    /// Gives a visible window another content size, as a user would, and lays out.
    virtual void resizeContent(Window& window, Size size) = 0;
};

std::unique_ptr<World> makeWorld();

/// One world for each case.
class ContractTest : public ::testing::Test {
protected:
    Platform& platform() { return world_->platform(); }
    bool runUntil(const std::function<bool()>& condition, double seconds = 20) {
        return world_->runUntil(condition, seconds);
    }
    /// Lets the platform work for `seconds`, come what may.
    void runFor(double seconds) {
        const double end = world_->now() + seconds;
        world_->runUntil([this, end] { return world_->now() >= end; }, seconds + 20);
    }
    static bool onMainThread() { return std::this_thread::get_id() == mainThread_; }

    std::unique_ptr<World> world_ = makeWorld();

private:
    inline static const std::thread::id mainThread_ = std::this_thread::get_id();
};

} // namespace vantorel::contract
