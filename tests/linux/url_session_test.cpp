// Vantorel. MIT licence, see LICENSE.
// Probes: what counts as an answer, and that each is over in time.
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/url_session.h"
#include "tests/linux/web_support.h"

namespace vantorel::gtk::test {
namespace {

using namespace std::chrono_literals;

struct Probe {
    UrlResult result;
    std::chrono::milliseconds time{};
    int completions = 0;
};

class UrlSessionTest : public testing::Test {
protected:
    Probe probe(const std::string& address, double timeout = 1.0) {
        const auto probe = std::make_shared<Probe>();
        const auto begin = std::chrono::steady_clock::now();
        UrlRequest request;
        request.address = address;
        request.timeoutSeconds = timeout;
        const auto task = session_->dataTask(request, [probe, begin](const UrlResult& result) {
            probe->result = result;
            probe->time =
                std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begin);
            ++probe->completions;
        });
        EXPECT_EQ(probe->completions, 0);
        task->resume();
        EXPECT_EQ(probe->completions, 0) << "inside resume";
        EXPECT_TRUE(runUntil([&] { return probe->completions > 0; }));
        runFor(50ms);
        EXPECT_EQ(probe->completions, 1);
        return *probe;
    }

    void expectStatus(int status, const Probe& probe) {
        EXPECT_EQ(probe.result.statusCode, std::optional<int>(status));
        EXPECT_FALSE(probe.result.error) << probe.result.error->description;
    }

    void expectError(const Probe& probe) {
        EXPECT_FALSE(probe.result.statusCode);
        ASSERT_TRUE(probe.result.error);
        EXPECT_FALSE(probe.result.error->localizedDescription.empty());
        EXPECT_FALSE(probe.result.error->description.empty());
    }

    void expectTimeOut(const Probe& probe) {
        expectError(probe);
        EXPECT_EQ(probe.result.error->localizedDescription, "The request timed out.");
        EXPECT_GE(probe.time, 900ms);
        EXPECT_LT(probe.time, 1500ms);
    }

    std::unique_ptr<UrlSession> session_ = makeUrlSession();
    RawServer server_;
};

TEST_F(UrlSessionTest, GivesTheStatusOfAnAnswer) {
    server_.page("/", "hello");
    expectStatus(200, probe(server_.address()));
    expectStatus(404, probe(server_.address("/nothing")));
}

TEST_F(UrlSessionTest, AsksForTheRootWhenTheAddressHasNoPath) {
    server_.page("/", "hello");
    expectStatus(200, probe(server_.address("")));
    EXPECT_TRUE(server_.requests("/").at(0).starts_with("GET / HTTP/1.1\r\n"));
}

TEST_F(UrlSessionTest, StatusesOtherThan200AreAnswersToo) {
    server_.on("/204", [](const Connection& c) { c.send("HTTP/1.1 204 No Content\r\n\r\n"); });
    server_.on("/500", [](const Connection& c) { c.answer("", "", "500 Internal Server Error"); });
    server_.on("/401", [](const Connection& c) { c.answer("", "WWW-Authenticate: Basic realm=\"x\"\r\n", "401 No"); });
    expectStatus(204, probe(server_.address("/204")));
    expectStatus(500, probe(server_.address("/500")));
    expectStatus(401, probe(server_.address("/401")));
    EXPECT_EQ(server_.count("/401"), 1);
}

TEST_F(UrlSessionTest, DoesNotFollowRedirects) {
    server_.on("/", [](const Connection& c) { c.answer("", "Location: /elsewhere\r\n", "302 Found"); });
    server_.page("/elsewhere", "hello");
    expectStatus(302, probe(server_.address()));
    EXPECT_EQ(server_.count("/elsewhere"), 0);
}

TEST_F(UrlSessionTest, ReachesAServerOnEitherLoopbackAddress) {
    RawServer six("::1");
    six.page("/", "hello");
    server_.page("/", "hello");
    const Probe overSix = probe(six.address());
    const Probe overFour = probe(server_.address());
    expectStatus(200, overSix);
    expectStatus(200, overFour);
    EXPECT_LT(overSix.time, 500ms);
    EXPECT_LT(overFour.time, 500ms);
}

TEST_F(UrlSessionTest, RefusedConnectionsAreErrors) {
    expectError(probe("http://localhost:" + std::to_string(freePort())));
}

TEST_F(UrlSessionTest, BrokenAnswersAreErrors) {
    server_.on("/close", [](const Connection&) {});
    server_.on("/reset", [](const Connection& c) { c.reset(); });
    server_.on("/noise", [](const Connection& c) { c.send("this is no answer\r\n\r\n"); });
    server_.on("/short", [](const Connection& c) { c.send("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nabc"); });
    server_.on("/cut", [](const Connection& c) {
        c.send("HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: 500\r\n\r\nshort");
    });
    expectError(probe(server_.address("/cut")));
    expectError(probe(server_.address("/close")));
    expectError(probe(server_.address("/reset")));
    expectError(probe(server_.address("/noise")));
    expectError(probe(server_.address("/short")));
}

TEST_F(UrlSessionTest, AddressesThatCannotBeUsedAreErrors) {
    for (const char* address : {"http://localhost:-1", "http://localhost:70000", "http://localhost:99999999999999", "",
                                "nonsense", "http://", "ftp://localhost/", "http://localhost:0"}) {
        SCOPED_TRACE(address);
        expectError(probe(address));
    }
}

TEST_F(UrlSessionTest, AServerThatNeverAnswersTimesOut) {
    server_.on("/", [](const Connection& c) { c.holdOpen(); });
    expectTimeOut(probe(server_.address()));
}

TEST_F(UrlSessionTest, AnAnswerAfterTheTimeIsTooLate) {
    server_.on("/", [](const Connection& c) {
        c.wait(1500ms);
        c.answer("late");
    });
    expectTimeOut(probe(server_.address()));
}

TEST_F(UrlSessionTest, TheTimeBoundsTheBodyToo) {
    server_.on("/stalled", [](const Connection& c) {
        c.send("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nabc");
        c.holdOpen();
    });
    server_.on("/trickle", [](const Connection& c) {
        c.send("HTTP/1.1 200 OK\r\n\r\n");
        while (c.send("x")) {
            c.wait(20ms);
        }
    });
    server_.on("/torrent", [](const Connection& c) {
        c.send("HTTP/1.1 200 OK\r\n\r\n");
        while (c.send(std::string(65536, 'x'))) {
        }
    });
    expectTimeOut(probe(server_.address("/stalled")));
    expectTimeOut(probe(server_.address("/trickle")));
    expectTimeOut(probe(server_.address("/torrent")));
}

TEST_F(UrlSessionTest, ALargeBodyThatEndsIsFine) {
    server_.page("/", std::string(3'000'000, 'x'));
    expectStatus(200, probe(server_.address()));
}

TEST_F(UrlSessionTest, AProxyIsNeverAsked) {
    RawServer proxy;
    for (const char* name : {"http_proxy", "HTTP_PROXY", "all_proxy"}) {
        g_setenv(name, ("http://127.0.0.1:" + std::to_string(proxy.port())).c_str(), TRUE);
    }
    session_ = makeUrlSession();
    server_.page("/", "hello");
    expectStatus(200, probe(server_.address()));
    for (const char* name : {"http_proxy", "HTTP_PROXY", "all_proxy"}) {
        g_unsetenv(name);
    }
}

TEST_F(UrlSessionTest, NoCookieIsKept) {
    server_.page("/", "hello", "Set-Cookie: a=b\r\n");
    expectStatus(200, probe(server_.address()));
    expectStatus(200, probe(server_.address()));
    EXPECT_EQ(server_.requests("/").at(1).find("Cookie"), std::string::npos);
}

TEST_F(UrlSessionTest, ManyProbesAtOnceEachReportOnce) {
    server_.page("/", "hello");
    int completions = 0;
    UrlRequest request;
    request.address = server_.address();
    request.timeoutSeconds = 10;
    for (int i = 0; i < 50; ++i) {
        session_
            ->dataTask(request,
                       [&](const UrlResult& result) {
                           EXPECT_EQ(result.statusCode, std::optional<int>(200));
                           ++completions;
                       })
            ->resume();
    }
    EXPECT_TRUE(runUntil([&] { return completions == 50; }));
}

TEST_F(UrlSessionTest, ATaskReportsWhenTheSessionIsGone) {
    server_.on("/", [](const Connection& c) { c.holdOpen(); });
    int completions = 0;
    UrlRequest request;
    request.address = server_.address();
    request.timeoutSeconds = 1;
    session_
        ->dataTask(request,
                   [&](const UrlResult& result) {
                       EXPECT_TRUE(result.error);
                       ++completions;
                   })
        ->resume();
    session_.reset();
    EXPECT_TRUE(runUntil([&] { return completions > 0; }));
    runFor(50ms);
    EXPECT_EQ(completions, 1);
}

TEST(Address, TakesWhatAPageCanBeAskedFor) {
    EXPECT_TRUE(isAddress("http://localhost:8080/"));
    EXPECT_TRUE(isAddress("http://localhost:-1/"));
    EXPECT_TRUE(isAddress("http://localhost:70000/"));
    EXPECT_FALSE(isAddress("nonsense"));
    EXPECT_FALSE(isAddress(""));
}

} // namespace
} // namespace vantorel::gtk::test
