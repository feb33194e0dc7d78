// Vantorel. MIT licence, see LICENSE.
// What platform/foundation.h promises of HTTP requests.
#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "tests/contract/world.h"

namespace vantorel::contract {
namespace {

class UrlSessionContract : public ContractTest {
protected:
    struct Outcome {
        std::mutex mutex;
        UrlResult result;
        std::atomic<int> completions = 0;
    };

    std::shared_ptr<DataTask> makeTask(int port, std::shared_ptr<Outcome> outcome, double timeout = 1) {
        const UrlRequest request{"http://localhost:" + std::to_string(port), CachePolicy::useProtocolCachePolicy,
                                 timeout};
        return platform().sharedUrlSession().dataTask(request, [outcome](const UrlResult& result) {
            {
                const std::lock_guard lock(outcome->mutex);
                outcome->result = result;
            }
            ++outcome->completions;
        });
    }
    /// The outcome of one request; a task that never completes is a failure.
    UrlResult get(int port) {
        const auto outcome = std::make_shared<Outcome>();
        makeTask(port, outcome)->resume();
        EXPECT_TRUE(runUntil([&] { return outcome->completions > 0; }, 10));
        runFor(0.05);
        EXPECT_EQ(outcome->completions, 1);
        const std::lock_guard lock(outcome->mutex);
        return outcome->result;
    }
    static void expectError(const UrlResult& result) {
        ASSERT_TRUE(result.error.has_value());
        EXPECT_FALSE(result.error->localizedDescription.empty());
        EXPECT_FALSE(result.error->description.empty());
    }
};

TEST_F(UrlSessionContract, EveryStatusIsAnAnswer) {
    for (const int status : {200, 204, 301, 302, 304, 404, 500}) {
        const UrlResult result = get(world_->serve({.status = status}));
        EXPECT_EQ(result.error, std::nullopt) << status;
        EXPECT_EQ(result.statusCode, status);
    }
}

TEST_F(UrlSessionContract, RedirectsAreNotFollowed) {
    const int port = world_->serve({.status = 302});
    EXPECT_EQ(get(port).statusCode, 302);
    EXPECT_EQ(world_->requestCount(), 1);
}

TEST_F(UrlSessionContract, RefusedConnectionIsAnError) {
    const UrlResult result = get(world_->closedPort());
    expectError(result);
    EXPECT_EQ(result.statusCode, std::nullopt);
}

TEST_F(UrlSessionContract, AddressWithoutAPossiblePortIsAnError) {
    expectError(get(-1));
    expectError(get(70'000));
}

TEST_F(UrlSessionContract, SilenceIsAnErrorAfterTheTimeOut) {
    const double begin = world_->now();
    const UrlResult result = get(world_->serve({.status = std::nullopt}));
    expectError(result);
    EXPECT_EQ(result.statusCode, std::nullopt);
    EXPECT_GE(world_->now() - begin, 0.9);
    EXPECT_LT(world_->now() - begin, 3);
}

TEST_F(UrlSessionContract, TimeOutBoundsTheBodyToo) {
    const double begin = world_->now();
    expectError(get(world_->serve({.status = 200, .endlessBody = true})));
    EXPECT_GE(world_->now() - begin, 0.9);
    EXPECT_LT(world_->now() - begin, 3);
}

TEST_F(UrlSessionContract, AnswerThatIsNotHttpIsNoSuccess) {
    EXPECT_NE(get(world_->serve({.garbage = true})).statusCode, 200);
}

TEST_F(UrlSessionContract, NothingHappensBeforeTheStart) {
    const auto outcome = std::make_shared<Outcome>();
    const auto task = makeTask(world_->serve({}), outcome);
    runFor(0.2);
    EXPECT_EQ(outcome->completions, 0);
    EXPECT_EQ(world_->requestCount(), 0);
    task->resume();
    EXPECT_TRUE(runUntil([&] { return outcome->completions == 1; }));
}

TEST_F(UrlSessionContract, CompletionNeverComesInsideTheStart) {
    const auto outcome = std::make_shared<Outcome>();
    const auto task = makeTask(world_->closedPort(), outcome);
    platform().mainQueue().async([outcome, task] {
        task->resume();
        EXPECT_EQ(outcome->completions, 0);
    });
    EXPECT_TRUE(runUntil([&] { return outcome->completions == 1; }));
}

TEST_F(UrlSessionContract, RequestsRunBesideEachOther) {
    const int slow = world_->serve({.status = std::nullopt});
    const int quick = world_->serve({});
    const auto first = std::make_shared<Outcome>();
    const auto second = std::make_shared<Outcome>();
    makeTask(slow, first)->resume();
    makeTask(quick, second)->resume();
    EXPECT_TRUE(runUntil([&] { return second->completions == 1; }));
    EXPECT_EQ(first->completions, 0);
    EXPECT_TRUE(runUntil([&] { return first->completions == 1; }));
}

} // namespace
} // namespace vantorel::contract
