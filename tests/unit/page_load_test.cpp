// Vantorel. MIT licence, see LICENSE.
// The request for the server's page and what becomes of it.
#include <gtest/gtest.h>

#include <cstdint>

#include "tests/unit/fake/shell_fixture.h"
#include "web/page_address.h"

namespace vantorel::fake {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(PageAddress, IsTheRootOnTheLoopbackHost) {
    EXPECT_EQ(pageAddress(8080), "http://localhost:8080/");
    EXPECT_EQ(pageAddress(0), "http://localhost:0/");
    EXPECT_EQ(pageAddress(-1), "http://localhost:-1/");
    EXPECT_EQ(pageAddress(INT64_MIN), "http://localhost:-9223372036854775808/");
}

class PageLoadTest : public ShellTest {
protected:
    void SetUp() override { launchQuietly(); }
};

TEST_F(PageLoadTest, RequestIsLoggedAndNeverServedFromACache) {
    shell_->loadWebPage();
    EXPECT_THAT(platform_.recorder.lines(), ElementsAre("log \"🌐 Loading: http://localhost:8080/\"",
                                                        "webView1.load(\"http://localhost:8080/\", cache 4, 30 s)"));
    EXPECT_THAT(page().loads(), ElementsAre(UrlRequest{"http://localhost:8080/",
                                                       CachePolicy::reloadIgnoringLocalAndRemoteCacheData, 30}));
}

TEST_F(PageLoadTest, PortIsReadAfreshEachTime) {
    shell_->setWebsocketPort(9000);
    shell_->loadWebPage();
    shell_->setWebsocketPort(9001);
    shell_->loadWebPage();
    ASSERT_EQ(page().loads().size(), 2U);
    EXPECT_EQ(page().loads()[0].address, "http://localhost:9000/");
    EXPECT_EQ(page().loads()[1].address, "http://localhost:9001/");
}

TEST_F(PageLoadTest, AddressThatIsNoneIsIgnoredAfterItsLine) {
    platform_.refusesAddresses = true;
    shell_->loadWebPage();
    EXPECT_THAT(platform_.recorder.lines(), ElementsAre("log \"🌐 Loading: http://localhost:8080/\""));
    EXPECT_THAT(page().loads(), IsEmpty());
}

TEST_F(PageLoadTest, FinishedLoadIsOneLine) {
    page().finish();
    EXPECT_THAT(platform_.recorder.lines(), ElementsAre("log \"✅ Page loaded successfully\""));
}

TEST_F(PageLoadTest, FailedLoadIsOneLineAndOneStatus) {
    page().fail({"The connection broke.", "Error 42"});
    EXPECT_THAT(platform_.recorder.lines(),
                ElementsAre("log \"❌ Page load failed: The connection broke.\"", "mainQueue.async()"));
    expectStatus("❌ Failed to load page: The connection broke.", SystemColor::red);
}

TEST_F(PageLoadTest, ProvisionalFailureIsWordedDifferently) {
    page().failProvisionally({"Connection refused.", "Error 42"});
    EXPECT_THAT(platform_.recorder.lines(),
                ElementsAre("log \"❌ Provisional navigation failed: Connection refused.\"", "mainQueue.async()"));
    expectStatus("❌ Failed to connect: Connection refused.", SystemColor::red);
}

TEST_F(PageLoadTest, NothingIsRetried) {
    platform_.advance(3);
    ASSERT_EQ(page().loads().size(), 1U);
    page().failProvisionally({"Connection refused.", "Error 42"});
    page().fail({"The connection broke.", "Error 42"});
    platform_.advance(600);
    EXPECT_EQ(page().loads().size(), 1U);
    EXPECT_EQ(page().reloads(), 0);
}

TEST_F(PageLoadTest, SecondLoadLetsTheFirstFailAsAnyOther) {
    shell_->loadWebPage();
    shell_->loadWebPage();
    page().failProvisionally({"cancelled", "cancelled"});
    page().finish();
    EXPECT_THAT(log_.lines(), ElementsAre("🌐 Loading: http://localhost:8080/", "🌐 Loading: http://localhost:8080/",
                                          "❌ Provisional navigation failed: cancelled", "✅ Page loaded successfully"));
    expectStatus("❌ Failed to connect: cancelled", SystemColor::red);
}

TEST_F(PageLoadTest, CallbacksForAControllerThatIsGoneDoNothing) {
    releaseShell();
    page().finish();
    page().fail({"x", "x"});
    page().failProvisionally({"x", "x"});
    EXPECT_THAT(platform_.recorder.lines(), IsEmpty());
}

class PageLoadDeathTest : public ShellTest {
protected:
    PageLoadDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(PageLoadDeathTest, WithoutAWebViewTheProcessEnds) {
    construct();
    EXPECT_DEATH(shell_->loadWebPage(), "webView");
}

} // namespace
} // namespace vantorel::fake
