// Vantorel. MIT licence, see LICENSE.
// The web view as it is built, and the script that bridges the page's console.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string_view>

#include "tests/unit/fake/shell_fixture.h"
#include "web/bridge_script.h"

namespace vantorel::fake {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

constexpr std::string_view kExpectedScript =
    R"JS((function() {
    var console = window.console || {};
    var old = {
        log: console.log,
        error: console.error,
        warn: console.warn
    };
    console.log = function() {
        window.webkit.messageHandlers.consoleLog.postMessage({type: 'log', message: Array.from(arguments).join(' ')});
        old.log.apply(console, arguments);
    };
    console.error = function() {
        window.webkit.messageHandlers.consoleLog.postMessage({type: 'error', message: Array.from(arguments).join(' ')});
        old.error.apply(console, arguments);
    };
    console.warn = function() {
        window.webkit.messageHandlers.consoleLog.postMessage({type: 'warn', message: Array.from(arguments).join(' ')});
        old.warn.apply(console, arguments);
    };
})();)JS";

TEST(BridgeScript, IsExactlyThis) {
    EXPECT_EQ(bridgeScript(), kExpectedScript);
    EXPECT_EQ(bridgeScript().size(), 774U);
    EXPECT_EQ(std::count(bridgeScript().begin(), bridgeScript().end(), '\n'), 19);
    EXPECT_EQ(bridgeScript().find('\r'), std::string_view::npos);
    EXPECT_EQ(bridgeScript().find('\t'), std::string_view::npos);
}

class WebViewTest : public ShellTest {
protected:
    void build(Size content) {
        construct();
        shell_->setWindow(platform_.makeWindow({{0, 0}, content}, 15));
        shell_->createStatusBar();
        shell_->createWebView();
    }
};

TEST_F(WebViewTest, CachesAreEmptiedAndNothingElse) {
    build({900, 750});
    ASSERT_EQ(platform_.websiteData->removals.size(), 1U);
    const auto& removal = platform_.websiteData->removals.front();
    EXPECT_THAT(removal.types, ElementsAre(WebsiteDataType::diskCache, WebsiteDataType::memoryCache));
    EXPECT_EQ(removal.since.time_since_epoch().count(), 0);
    ASSERT_TRUE(removal.completion);
    platform_.recorder.clear();
    removal.completion();
    EXPECT_THAT(platform_.recorder.lines(), IsEmpty());
}

TEST_F(WebViewTest, ConfigurationAsRequired) {
    build({900, 750});
    const FakeWebViewConfiguration& configuration = page().configuration();
    EXPECT_THAT(configuration.switches(),
                ElementsAre(Pair("allowFileAccessFromFileURLs", true), Pair("developerExtrasEnabled", true),
                            Pair("javaScriptEnabled", true)));
    EXPECT_TRUE(configuration.canOpenWindowsAutomatically());
    EXPECT_EQ(configuration.websiteDataStore(), platform_.websiteData);
    ASSERT_EQ(configuration.userScripts().size(), 1U);
    EXPECT_EQ(configuration.userScripts()[0].source, kExpectedScript);
    EXPECT_EQ(configuration.userScripts()[0].injectionTime, UserScriptInjectionTime::atDocumentStart);
    EXPECT_FALSE(configuration.userScripts()[0].forMainFrameOnly);
    EXPECT_EQ(configuration.handler("consoleLog"), shell_);
}

TEST_F(WebViewTest, DelegatesAreTheControllerHeldWeakly) {
    build({900, 750});
    EXPECT_EQ(page().navigationDelegate(), shell_);
    EXPECT_EQ(page().uiDelegate(), shell_);
    EXPECT_EQ(page().allowsGestures(), false);
    releaseShell();
    EXPECT_EQ(page().navigationDelegate(), nullptr);
    EXPECT_EQ(page().uiDelegate(), nullptr);
    EXPECT_EQ(page().configuration().handler("consoleLog"), nullptr);
}

TEST_F(WebViewTest, LiesBelowTheStrip) {
    build({640, 480});
    EXPECT_EQ(page().frame(), (Rect{{0, 0}, {640, 450}}));
    EXPECT_EQ(page().autoresizingMask(), 18U);
    EXPECT_THAT(window().content().subviews(), ElementsAre(shell_->webView(), shell_->statusBar()));
}

TEST_F(WebViewTest, LoadsNothing) {
    build({900, 750});
    EXPECT_THAT(page().loads(), IsEmpty());
    EXPECT_THAT(log_.lines(), IsEmpty());
    EXPECT_EQ(page().pageZoom(), 1.0);
}

TEST_F(WebViewTest, WithoutAStripItGoesBelowEverything) {
    construct();
    const auto made = platform_.makeWindow({{0, 0}, {900, 750}}, 15);
    shell_->setWindow(made);
    const auto other = platform_.makeView({{0, 0}, {10, 10}});
    made->contentView()->addSubview(other);
    shell_->createWebView();
    EXPECT_THAT(window().content().subviews(), ElementsAre(shell_->webView(), other));
}

TEST_F(WebViewTest, ContentViewThatIsGoneAtTheInsertionIsTolerated) {
    construct();
    platform_.onMakeWindow = [](FakeWindow& made) {
        made.hasContentView = [reads = 0]() mutable { return reads++ < 1; };
    };
    shell_->setWindow(platform_.makeWindow({{0, 0}, {900, 750}}, 15));
    shell_->createWebView();
    ASSERT_NE(shell_->webView(), nullptr);
    EXPECT_EQ(page().frame(), (Rect{{0, 0}, {900, 720}}));
    EXPECT_THAT(window().content().subviews(), IsEmpty());
}

TEST_F(WebViewTest, ViewAndStripFollowTheWindow) {
    build({900, 750});
    window().resizeContent({1000, 600});
    EXPECT_EQ(page().frame(), (Rect{{0, 0}, {1000, 570}}));
    EXPECT_EQ(platform_.views.at(0)->frame(), (Rect{{0, 570}, {1000, 30}}));
}

class WebViewDeathTest : public WebViewTest {
protected:
    WebViewDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(WebViewDeathTest, WithoutAWindowTheProcessEnds) {
    construct();
    EXPECT_DEATH(shell_->createWebView(), "window");
}

TEST_F(WebViewDeathTest, WithoutAContentViewForTheFrameTheProcessEnds) {
    construct();
    platform_.onMakeWindow = [](FakeWindow& made) { made.hasContentView = [] { return false; }; };
    shell_->setWindow(platform_.makeWindow({{0, 0}, {900, 750}}, 15));
    EXPECT_DEATH(shell_->createWebView(), "content");
}

} // namespace
} // namespace vantorel::fake
