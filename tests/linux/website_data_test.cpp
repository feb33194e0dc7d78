// Vantorel. MIT licence, see LICENSE.
// Pages' data: where it is kept, what is removed, and that loopback goes without a proxy.
#include "platform/linux/website_data.h"

#include <algorithm>

#include "tests/linux/web_view_support.h"

namespace vantorel::gtk::test {
namespace {

using namespace std::chrono_literals;

/// Sets a variable for as long as it lives.
class Variable {
public:
    Variable(const char* name, const std::string& value) : name_(name) {
        const char* before = g_getenv(name);
        if (before != nullptr) {
            before_ = before;
        }
        g_setenv(name, value.c_str(), TRUE);
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;
    ~Variable() {
        if (before_) {
            g_setenv(name_, before_->c_str(), TRUE);
        } else {
            g_unsetenv(name_);
        }
    }

private:
    const char* name_;
    std::optional<std::string> before_;
};

bool reachesDirectly(const ProxyChoice& choice, const std::string& host) {
    return std::find(choice.direct.begin(), choice.direct.end(), host) != choice.direct.end();
}

TEST(Proxy, NoneWithoutVariables) {
    const Variable http("http_proxy", "");
    const Variable https("https_proxy", "");
    const Variable all("all_proxy", "");
    const Variable upperHttp("HTTP_PROXY", "");
    const Variable upperHttps("HTTPS_PROXY", "");
    const Variable upperAll("ALL_PROXY", "");
    const ProxyChoice choice = proxyFromEnvironment();
    EXPECT_EQ(choice.http, "");
    EXPECT_EQ(choice.https, "");
}

TEST(Proxy, VariablesNameItAndItsExceptions) {
    const Variable http("http_proxy", "proxy.example:3128");
    const Variable all("all_proxy", "socks5://proxy.example:1080");
    const Variable https("https_proxy", "");
    const Variable upperHttps("HTTPS_PROXY", "");
    const Variable exceptions("no_proxy", "intern.example, .other.example,,");
    const ProxyChoice choice = proxyFromEnvironment();
    EXPECT_EQ(choice.http, "http://proxy.example:3128");
    EXPECT_EQ(choice.https, "socks5://proxy.example:1080");
    for (const char* host : {"localhost", "127.0.0.0/8", "::1", "intern.example", ".other.example"}) {
        EXPECT_TRUE(reachesDirectly(choice, host)) << host;
    }
}

class ProxiedPageTest : public WebViewTest {};

TEST_F(ProxiedPageTest, APageOnLoopbackIsLoadedWithoutIt) {
    RawServer proxy;
    const std::string address = "http://127.0.0.1:" + std::to_string(proxy.port());
    const Variable http("http_proxy", address);
    const Variable all("all_proxy", address);
    store_ = std::make_shared<GtkWebsiteDataStore>(WebsiteDataPlace{folder_.file("data2"), folder_.file("cache2")});
    makeView();
    server_.page("/", "<p>hello");
    loadPage("/");
    EXPECT_EQ(server_.count("/"), 1);
    UrlRequest outside;
    outside.address = "http://outside.example/";
    view_->load(outside);
    // The proxy is asked for what is not on loopback, which proves that it was known.
    EXPECT_TRUE(runUntil([&] { return proxy.count("http://outside.example/") == 1; }));
}

class WebsiteDataTest : public WebViewTest {
protected:
    void SetUp() override {
        server_.page("/", "<meta charset=utf-8><title>page</title>");
        makeView();
        loadPage("/");
    }

    /// As after a new start of the application.
    void startAgain() {
        // Another session keeps the engine's network process alive meanwhile; see WebViewTest's end.
        const auto other = std::make_shared<GtkWebsiteDataStore>(std::nullopt);
        other->removeData({WebsiteDataType::memoryCache}, {}, nullptr);
        gtk_window_destroy(GTK_WINDOW(window_));
        window_ = nullptr;
        view_.reset();
        store_.reset();
        runFor(300ms);
        store_ = std::make_shared<GtkWebsiteDataStore>(WebsiteDataPlace{folder_.file("data"), folder_.file("cache")});
        makeView();
        loadPage("/");
    }

    void purge(std::chrono::system_clock::time_point since = {}) {
        int completions = 0;
        store_->removeData({WebsiteDataType::diskCache, WebsiteDataType::memoryCache}, since, [&] { ++completions; });
        EXPECT_EQ(completions, 0) << "inside the call";
        EXPECT_TRUE(runUntil([&] { return completions == 1; }));
    }
};

TEST_F(WebsiteDataTest, CookiesAndLocalStorageOutliveTheView) {
    run("document.cookie = 'kept=1; max-age=3600'; localStorage.setItem('kept', '1')");
    purge();
    expectInPage("document.cookie === 'kept=1' && localStorage.getItem('kept') === '1'");
    runFor(500ms);
    startAgain();
    expectInPage("document.cookie === 'kept=1'");
    expectInPage("localStorage.getItem('kept') === '1'");
}

TEST_F(WebsiteDataTest, APurgeEmptiesTheCaches) {
    server_.page("/image", "body { color: red }", "Cache-Control: max-age=3600\r\n");
    const auto fetchImage = [this] {
        run("var answered = 0; fetch('/image').then(answer => answer.text()).then(() => { answered = 1 })");
        EXPECT_TRUE(runUntil([this] { return run("if (!answered) throw 1").empty(); }));
    };
    fetchImage();
    fetchImage();
    EXPECT_EQ(server_.count("/image"), 1);
    purge();
    fetchImage();
    EXPECT_EQ(server_.count("/image"), 2);
}

TEST_F(WebsiteDataTest, ACompletionMayBeMissing) {
    store_->removeData({WebsiteDataType::diskCache}, std::chrono::system_clock::now() - 1h, nullptr);
    store_->removeData({}, {}, nullptr);
    runFor(200ms);
}

TEST_F(WebViewTest, WithoutAPlaceDataLivesInMemory) {
    store_ = std::make_shared<GtkWebsiteDataStore>(std::nullopt);
    EXPECT_TRUE(webkit_network_session_is_ephemeral(store_->session()));
    makeView();
    server_.page("/", "<p>hello");
    loadPage("/");
    EXPECT_EQ(run("localStorage.setItem('a', '1')"), "");
}

TEST(DefaultWebsiteDataStore, IsOneForTheProcess) {
    const auto one = defaultWebsiteDataStore();
    EXPECT_EQ(one, defaultWebsiteDataStore());
}

} // namespace
} // namespace vantorel::gtk::test
