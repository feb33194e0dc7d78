// Vantorel. MIT licence, see LICENSE.
// Loads of the web view: one outcome for each, of the right kind.
#include "tests/linux/web_view_support.h"

namespace vantorel::gtk::test {
namespace {

using namespace std::chrono_literals;

class WebViewLoadTest : public WebViewTest {
protected:
    void SetUp() override { makeView(); }

    void expectOutcome(const std::string& path, const std::string& outcome, double timeout = 30) {
        SCOPED_TRACE(path);
        recorder_->calls.clear();
        view_->load(request(path, timeout));
        EXPECT_TRUE(recorder_->calls.empty()) << "inside the call";
        expectCalls(1);
        EXPECT_TRUE(recorder_->calls.at(0).starts_with(outcome)) << recorder_->calls.at(0);
    }
};

TEST_F(WebViewLoadTest, APageFinishes) {
    server_.page("/", "<p>hello");
    expectOutcome("/", "finished");
}

TEST_F(WebViewLoadTest, APageThatGoesOnToAnotherFinishesTwice) {
    server_.page("/", "<script>location = '/next'</script>");
    server_.page("/next", "<title>next</title>");
    view_->load(request("/"));
    expectCalls(2);
    EXPECT_EQ(recorder_->calls, (std::vector<std::string>{"finished", "finished"}));
    expectInPage("document.title === 'next'");
}

TEST_F(WebViewLoadTest, AnErrorStatusIsAPageToo) {
    server_.on("/500", [](const Connection& c) { c.answer("<p>bad", "", "500 Internal Server Error"); });
    expectOutcome("/500", "finished");
    expectOutcome("/nothing", "finished");
}

TEST_F(WebViewLoadTest, AServerOnTheOtherLoopbackAddressIsFound) {
    RawServer six("::1");
    six.page("/", "<p>hello");
    UrlRequest request;
    request.address = six.address();
    view_->load(request);
    expectCalls(1);
    EXPECT_EQ(recorder_->calls.at(0), "finished");
}

TEST_F(WebViewLoadTest, FailuresBeforeTheAnswerAreProvisional) {
    server_.on("/close", [](const Connection&) {});
    server_.on("/reset", [](const Connection& c) { c.reset(); });
    server_.on("/noise", [](const Connection& c) { c.send("this is no answer\r\n\r\n"); });
    server_.on("/204", [](const Connection& c) { c.send("HTTP/1.1 204 No Content\r\n\r\n"); });
    for (const char* path : {"/close", "/reset", "/noise", "/204"}) {
        expectOutcome(path, "failed provisionally: ");
    }
}

TEST_F(WebViewLoadTest, ARefusedConnectionIsProvisional) {
    UrlRequest request;
    request.address = "http://localhost:" + std::to_string(freePort()) + "/";
    view_->load(request);
    expectCalls(1);
    EXPECT_TRUE(recorder_->calls.at(0).starts_with("failed provisionally: ")) << recorder_->calls.at(0);
}

TEST_F(WebViewLoadTest, FailuresAfterTheFirstBytesAreNot) {
    const std::string head = "HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nContent-Length: 1000000\r\n\r\n";
    server_.on("/short", [head](const Connection& c) {
        c.send(head + "<p>abc");
        c.wait(100ms);
    });
    server_.on("/long", [head](const Connection& c) {
        c.send(head + std::string(200000, 'x'));
        c.wait(100ms);
    });
    server_.on("/reset", [head](const Connection& c) {
        c.send(head + std::string(200000, 'x'));
        c.wait(100ms);
        c.reset();
    });
    server_.on("/cut", [](const Connection& c) {
        c.send("HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nConnection: close\r\nContent-Length: 900000\r\n\r\n" +
               std::string(20000, 'x'));
    });
    for (const char* path : {"/short", "/long", "/reset", "/cut"}) {
        expectOutcome(path, "failed: ");
    }
}

TEST_F(WebViewLoadTest, AFailureLeavesThePageBefore) {
    server_.page("/", "<title>first</title>");
    server_.on("/close", [](const Connection&) {});
    loadPage("/");
    expectOutcome("/close", "failed provisionally: ");
    expectInPage("document.title === 'first'");
}

TEST_F(WebViewLoadTest, PortsThatCannotBeAreFailures) {
    server_.page("/", "<title>first</title>");
    loadPage("/");
    for (const char* port : {"-1", "70000", "6000", "1", "9", "0"}) {
        SCOPED_TRACE(port);
        UrlRequest request;
        request.address = std::string("http://localhost:") + port + "/";
        request.cachePolicy = CachePolicy::reloadIgnoringLocalAndRemoteCacheData;
        recorder_->calls.clear();
        view_->load(request);
        expectCalls(1);
        EXPECT_TRUE(recorder_->calls.at(0).starts_with("failed provisionally: ")) << recorder_->calls.at(0);
        expectInPage("document.title === 'first'");
    }
}

TEST_F(WebViewLoadTest, ALinkToARefusedPortLeavesThePage) {
    server_.page("/", "<title>first</title><a id=a href='http://localhost:6000/'>x</a>");
    loadPage("/");
    run("document.getElementById('a').click()");
    runFor(300ms);
    EXPECT_TRUE(recorder_->calls.empty()) << recorder_->calls.front();
    expectInPage("document.title === 'first'");
}

TEST_F(WebViewLoadTest, NoAnswerInTimeIsProvisional) {
    server_.on("/never", [](const Connection& c) { c.holdOpen(); });
    const auto begin = std::chrono::steady_clock::now();
    expectOutcome("/never", "failed provisionally: The request timed out.", 0.5);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 500ms);
}

TEST_F(WebViewLoadTest, AnAnswerStopsTheClock) {
    server_.on("/slow", [](const Connection& c) {
        c.send("HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nContent-Length: 200003\r\n\r\n" +
               std::string(200000, 'x'));
        c.wait(2500ms);
        c.send("end");
    });
    expectOutcome("/slow", "finished", 2);
}

TEST_F(WebViewLoadTest, ANewLoadCancelsTheOneBefore) {
    server_.page("/", "<p>hello");
    server_.on("/never", [](const Connection& c) { c.holdOpen(); });
    server_.on("/half", [](const Connection& c) {
        c.send("HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nContent-Length: 1000000\r\n\r\n" +
               std::string(200000, 'x'));
        c.holdOpen();
    });
    view_->load(request("/never"));
    ASSERT_TRUE(runUntil([&] { return server_.count("/never") == 1; }));
    view_->load(request("/"));
    expectCalls(2);
    EXPECT_TRUE(recorder_->calls.at(0).starts_with("failed provisionally: ")) << recorder_->calls.at(0);
    EXPECT_EQ(recorder_->calls.at(1), "finished");

    recorder_->calls.clear();
    view_->load(request("/half"));
    ASSERT_TRUE(runUntil([&] {
        return std::string(webkit_web_view_get_uri(view_->engineView())).ends_with("/half") &&
               webkit_web_view_get_estimated_load_progress(view_->engineView()) > 0.1;
    }));
    runFor(200ms);
    view_->load(request("/"));
    expectCalls(2);
    EXPECT_TRUE(recorder_->calls.at(0).starts_with("failed: ")) << recorder_->calls.at(0);
    EXPECT_EQ(recorder_->calls.at(1), "finished");
}

TEST_F(WebViewLoadTest, OfManyLoadsAtOnceTheLastOneCounts) {
    server_.page("/", "<p>hello");
    for (int i = 0; i < 5; ++i) {
        view_->load(request("/"));
    }
    expectCalls(5);
    for (int i = 0; i < 4; ++i) {
        EXPECT_TRUE(recorder_->calls.at(static_cast<std::size_t>(i)).starts_with("failed provisionally: "));
    }
    EXPECT_EQ(recorder_->calls.at(4), "finished");
}

TEST_F(WebViewLoadTest, LoadsWithoutCachePolicyCancelToo) {
    server_.page("/", "<p>hello");
    UrlRequest plain = request("/");
    plain.cachePolicy = CachePolicy::useProtocolCachePolicy;
    for (int i = 0; i < 5; ++i) {
        view_->load(plain);
        runFor(std::chrono::milliseconds(i));
    }
    expectCalls(5);
    EXPECT_EQ(recorder_->calls.at(4), "finished");
}

TEST_F(WebViewLoadTest, ACachedPageIsNeverUsed) {
    server_.page("/", "<p>hello", "Cache-Control: max-age=31536000, immutable\r\nETag: \"a\"\r\n");
    for (int i = 1; i <= 3; ++i) {
        loadPage("/");
        EXPECT_EQ(server_.count("/"), i);
    }
    for (const std::string& text : server_.requests("/")) {
        EXPECT_NE(text.find("Cache-Control: no-cache\r\n"), std::string::npos) << text;
        EXPECT_EQ(text.find("If-None-Match"), std::string::npos) << text;
    }
}

TEST_F(WebViewLoadTest, ReloadLoadsTheCurrentPageAgain) {
    server_.page("/", "<p>hello");
    loadPage("/");
    view_->reload();
    expectCalls(1);
    EXPECT_EQ(recorder_->calls.at(0), "finished");
    EXPECT_EQ(server_.count("/"), 2);
}

TEST_F(WebViewLoadTest, ReloadWithoutAPageDoesNothing) {
    view_->reload();
    runFor(300ms);
    EXPECT_TRUE(recorder_->calls.empty());
}

TEST_F(WebViewLoadTest, ReloadIsNotHeldUpByAQuestion) {
    server_.page("/", "<script>window.onbeforeunload = event => { event.preventDefault(); return 'stay'; };</script>");
    loadPage("/");
    run("1");
    view_->reload();
    expectCalls(1);
    EXPECT_EQ(recorder_->calls.at(0), "finished");
    EXPECT_EQ(server_.count("/"), 2);
}

TEST_F(WebViewLoadTest, AServerThatAsksForAPasswordShowsItsAnswer) {
    server_.on("/", [](const Connection& c) {
        c.answer("<title>no</title>", "WWW-Authenticate: Basic realm=\"x\"\r\n", "401 Unauthorized");
    });
    expectOutcome("/", "finished");
    expectInPage("document.title === 'no'");
}

TEST_F(WebViewLoadTest, NothingIsDownloaded) {
    server_.on("/file", [](const Connection& c) {
        c.answer("x", "Content-Disposition: attachment; filename=x.bin\r\n", "200 OK", "application/octet-stream");
    });
    server_.page("/", "<a id=a download href=/file>x</a>");
    expectOutcome("/file", "failed provisionally: ");
    loadPage("/");
    run("document.getElementById('a').click()");
    runFor(500ms);
    const GText downloads(g_build_filename(g_get_home_dir(), "Downloads", "x.bin", nullptr));
    EXPECT_FALSE(g_file_test(downloads.get(), G_FILE_TEST_EXISTS));
}

TEST_F(WebViewLoadTest, ADeadPageProcessLoadsThePageAgainOnce) {
    server_.page("/", "<p>hello");
    loadPage("/");
    webkit_web_view_terminate_web_process(view_->engineView());
    expectCalls(1);
    EXPECT_EQ(recorder_->calls.at(0), "finished");
    EXPECT_EQ(server_.count("/"), 2);
    EXPECT_EQ(run("1"), "");

    server_.on("/", [](const Connection& c) { c.holdOpen(); });
    recorder_->calls.clear();
    webkit_web_view_terminate_web_process(view_->engineView());
    ASSERT_TRUE(runUntil([&] { return server_.count("/") == 3; }));
    webkit_web_view_terminate_web_process(view_->engineView());
    expectCalls(1);
    EXPECT_TRUE(recorder_->calls.at(0).starts_with("failed provisionally: ")) << recorder_->calls.at(0);
    runFor(300ms);
    EXPECT_EQ(server_.count("/"), 3);
}

TEST_F(WebViewLoadTest, IsDrawnFromThePagesFirstFrameOn) {
    server_.page("/", "<p>hello");
    EXPECT_FALSE(view_->core().drawsContent());
    view_->load(request("/"));
    ASSERT_TRUE(runUntil([&] { return view_->core().drawsContent(); }));
    EXPECT_EQ(server_.count("/"), 1);
    ASSERT_TRUE(runUntil([&] { return !recorder_->calls.empty(); }));

    server_.on("/", [](const Connection&) {});
    view_->load(request("/"));
    ASSERT_TRUE(runUntil([&] { return recorder_->calls.size() == 2; }));
    EXPECT_TRUE(view_->core().drawsContent()) << "a failure leaves the page as it was";

    server_.page("/", "<p>hello");
    webkit_web_view_terminate_web_process(view_->engineView());
    ASSERT_TRUE(runUntil([&] { return !view_->core().drawsContent(); }));
    EXPECT_TRUE(runUntil([&] { return view_->core().drawsContent(); }));
}

class AcceleratedWebViewTest : public WebViewTest {
protected:
    void SetUp() override { makeView(false); }
};

TEST_F(AcceleratedWebViewTest, IsDrawnFromTheStart) {
    server_.page("/", "<p>hello");
    EXPECT_TRUE(view_->core().drawsContent());
    loadPage("/");
    webkit_web_view_terminate_web_process(view_->engineView());
    expectCalls(1);
    EXPECT_TRUE(view_->core().drawsContent());
}

TEST_F(WebViewLoadTest, APageBusyBeforeItsFirstFrameIsNotDrawn) {
    server_.page("/", "<script>const end = Date.now() + 400; while (Date.now() < end);</script><p>hello");
    bool begun = false;
    view_->load(request("/"));
    ASSERT_TRUE(runUntil([&] { return webkit_web_view_get_uri(view_->engineView()) != nullptr; }));
    const auto connection =
        connect<void(WebKitLoadEvent)>(view_->engineView(), "load-changed", [&](WebKitLoadEvent event) {
            if (event == WEBKIT_LOAD_COMMITTED) {
                begun = true;
            }
        });
    ASSERT_TRUE(runUntil([&] { return begun; }));
    EXPECT_FALSE(view_->core().drawsContent());
    EXPECT_TRUE(runUntil([&] { return view_->core().drawsContent(); }));
}

TEST_F(WebViewLoadTest, APageProcessThatDiesDuringALoadEndsIt) {
    server_.on("/", [](const Connection& c) { c.holdOpen(); });
    view_->load(request("/"));
    ASSERT_TRUE(runUntil([&] { return server_.count("/") == 1; }));
    webkit_web_view_terminate_web_process(view_->engineView());
    expectCalls(1);
    EXPECT_EQ(recorder_->calls.at(0), "failed provisionally: The page's process ended.");
}

TEST_F(WebViewLoadTest, DelegatesThatAreGoneAreNotCalled) {
    server_.page("/", "<p>hello");
    recorder_ = std::make_shared<Recorder>();
    view_->load(request("/"));
    ASSERT_TRUE(runUntil([&] { return server_.count("/") == 1; }));
    runFor(200ms);
    EXPECT_TRUE(recorder_->calls.empty());
}

TEST_F(WebViewLoadTest, AViewMayGoWhileItLoads) {
    server_.on("/", [](const Connection& c) { c.holdOpen(); });
    view_->load(request("/"));
    ASSERT_TRUE(runUntil([&] { return server_.count("/") == 1; }));
    gtk_window_destroy(GTK_WINDOW(window_));
    window_ = nullptr;
    view_.reset();
    runFor(200ms);
    EXPECT_TRUE(recorder_->calls.empty());
}

} // namespace
} // namespace vantorel::gtk::test
