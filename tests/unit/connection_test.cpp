// Vantorel. MIT licence, see LICENSE.
// The probe that asks the server every two seconds whether it answers.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "tests/unit/fake/shell_fixture.h"

namespace vantorel::fake {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kNotResponding = "⚠️ Server running but not responding...";

class ConnectionTest : public ShellTest {
protected:
    void SetUp() override { launchQuietly(); }
    void probe() { shell_->checkServerConnection(); }
    void expectOrangeAfter(const UrlResult& result) {
        const std::size_t index = platform_.http.taskCount();
        shell_->updateStatus("before", SystemColor::red);
        platform_.runMainQueue();
        probe();
        platform_.http.answer(index, result);
        expectStatus(kNotResponding, SystemColor::orange);
    }
};

TEST_F(ConnectionTest, NothingBeforeTheServerWasLaunched) {
    shell_->setIsServerRunning(false);
    probe();
    EXPECT_THAT(platform_.recorder.lines(), IsEmpty());
}

TEST_F(ConnectionTest, RequestIsAPlainGetWithinOneSecond) {
    probe();
    EXPECT_THAT(platform_.recorder.lines(),
                ElementsAre("urlSession.dataTask(\"http://localhost:8080\", cache 0, 1 s) -> task1", "task1.resume()"));
    EXPECT_EQ(platform_.http.request(0), (UrlRequest{"http://localhost:8080", CachePolicy::useProtocolCachePolicy, 1}));
}

TEST_F(ConnectionTest, AddressBearsThePortAsItIs) {
    for (const std::int64_t port : {std::int64_t{9000}, std::int64_t{0}, std::int64_t{-1}, std::int64_t{70000}}) {
        const std::size_t index = platform_.http.taskCount();
        shell_->setWebsocketPort(port);
        probe();
        EXPECT_EQ(platform_.http.request(index).address, "http://localhost:" + std::to_string(port));
    }
}

TEST_F(ConnectionTest, Status200IsConnected) {
    probe();
    platform_.http.answer(0, FakeUrlSession::status(200));
    expectStatus("✅ Connected to server on port 8080", SystemColor::systemGreen);
    EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(ConnectionTest, EveryOtherStatusIsNotResponding) {
    for (const int code : {0, 100, 199, 201, 204, 206, 301, 302, 304, 307, 400, 401, 404, 500, 503, -200}) {
        expectOrangeAfter(FakeUrlSession::status(code));
    }
    EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(ConnectionTest, ErrorsAndOtherAnswersAreNotResponding) {
    expectOrangeAfter(FakeUrlSession::failure("refused"));
    expectOrangeAfter(UrlResult{});
    expectOrangeAfter(UrlResult{.error = PlatformError{"broken", "broken"}, .statusCode = 200});
    EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(ConnectionTest, CompletionOnlyForwardsToTheMainQueue) {
    probe();
    platform_.recorder.clear();
    platform_.http.answer(0, FakeUrlSession::status(200));
    EXPECT_THAT(platform_.recorder.lines(), ElementsAre("mainQueue.async()"));
    ASSERT_TRUE(platform_.loop.runOneMainBlock());
    EXPECT_THAT(platform_.recorder.lines(), ElementsAre("mainQueue.async()", "mainQueue.async()"));
}

TEST_F(ConnectionTest, CompletionMayComeOnTheMainThread) {
    probe();
    platform_.http.answerDirectly(0, FakeUrlSession::status(200));
    expectStatus("✅ Connected to server on port 8080", SystemColor::systemGreen);
}

TEST_F(ConnectionTest, PortIsReadWhenTheAnswerIsShown) {
    probe();
    platform_.http.answer(0, FakeUrlSession::status(200));
    shell_->setWebsocketPort(9001);
    expectStatus("✅ Connected to server on port 9001", SystemColor::systemGreen);
}

TEST_F(ConnectionTest, StripIsWrittenEvenWhenNothingChanged) {
    for (std::size_t i = 0; i < 2; ++i) {
        probe();
        platform_.http.answer(i, FakeUrlSession::status(200));
        platform_.runMainQueue();
    }
    EXPECT_EQ(platform_.recorder.count("textField1.setStringValue(\"✅ Connected to server on port 8080\")"), 2U);
}

TEST_F(ConnectionTest, ProbesMayOverlapAndEndInAnyOrder) {
    probe();
    probe();
    platform_.http.answer(1, FakeUrlSession::status(200));
    platform_.http.answer(0, FakeUrlSession::status(500));
    expectStatus(kNotResponding, SystemColor::orange);
}

TEST_F(ConnectionTest, NothingHappensWhenTheControllerIsGoneBeforeTheAnswer) {
    probe();
    releaseShell();
    platform_.http.answer(0, FakeUrlSession::status(200));
    platform_.recorder.clear();
    platform_.runMainQueue();
    EXPECT_THAT(platform_.recorder.lines(), IsEmpty());
}

TEST_F(ConnectionTest, NothingHappensWhenTheControllerIsGoneBeforeTheAnswerIsShown) {
    probe();
    platform_.http.answer(0, FakeUrlSession::failure("refused"));
    releaseShell();
    platform_.recorder.clear();
    platform_.runMainQueue();
    EXPECT_THAT(platform_.recorder.lines(), IsEmpty());
}

TEST_F(ConnectionTest, StatusFollowsTheServerFromStartToEnd) {
    expectStatus("🔄 Server starting... Waiting for connection...", SystemColor::orange);
    platform_.advance(2);
    platform_.http.answer(0, FakeUrlSession::failure("refused"));
    expectStatus(kNotResponding, SystemColor::orange);
    platform_.advance(2);
    platform_.http.answer(1, FakeUrlSession::status(200));
    expectStatus("✅ Connected to server on port 8080", SystemColor::systemGreen);
    child().end(1);
    expectStatus("❌ Server exited with code 1", SystemColor::red);
    platform_.advance(2);
    platform_.http.answer(2, FakeUrlSession::failure("refused"));
    expectStatus(kNotResponding, SystemColor::orange);
    platform_.advance(2);
    platform_.http.answer(3, FakeUrlSession::failure("refused"));
    expectStatus(kNotResponding, SystemColor::orange);
}

TEST_F(ConnectionTest, ReturningServerTurnsGreenWithoutAReload) {
    platform_.advance(4);
    platform_.http.answer(0, FakeUrlSession::failure("refused"));
    platform_.http.answer(1, FakeUrlSession::status(200));
    expectStatus("✅ Connected to server on port 8080", SystemColor::systemGreen);
    EXPECT_EQ(page().reloads(), 0);
    EXPECT_EQ(page().loads().size(), 1U);
}

} // namespace
} // namespace vantorel::fake
