// Vantorel. MIT licence, see LICENSE.
// Pages in a real WKWebView: loads, the bridge to the log, pop-ups and panels, driven by scripts.
#import <AppKit/AppKit.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#import "platform/macos/view.h"
#include "tests/macos/native/mac_world.h"
#include "tests/macos/native/raw_server.h"
#include "web/bridge_script.h"

namespace vantorel::mac::test {
namespace {

using ::testing::ElementsAre;
using ::testing::StartsWith;

/// All of the page's roles in one; each call is a line.
class Recorder : public NavigationDelegate, public UiDelegate, public ScriptMessageHandler {
public:
    void didFinishNavigation(WebView& /*view*/) override { calls.emplace_back("finished"); }
    void didFailNavigation(WebView& /*view*/, const PlatformError& error) override {
        calls.push_back("failed: " + error.localizedDescription);
    }
    void didFailProvisionalNavigation(WebView& /*view*/, const PlatformError& error) override {
        calls.push_back("failed provisionally: " + error.localizedDescription);
    }
    std::shared_ptr<WebView> createWebView(WebView& /*view*/, const std::optional<std::string>& address) override {
        calls.push_back("window: " + address.value_or("none"));
        return nullptr;
    }
    void runAlertPanel(WebView& /*view*/, const std::string& message, std::function<void()> completion) override {
        calls.push_back("alert: " + message);
        completion();
    }
    void runConfirmPanel(WebView& /*view*/, const std::string& message, std::function<void(bool)> completion) override {
        calls.push_back("confirm: " + message);
        completion(confirms);
    }
    void runTextInputPanel(WebView& /*view*/, const std::string& prompt, const std::optional<std::string>& defaultText,
                           std::function<void(std::optional<std::string>)> completion) override {
        calls.push_back("prompt: " + prompt + "|" + defaultText.value_or(""));
        completion(answer);
    }
    void didReceiveScriptMessage(const std::string& name, const ScriptValue& body) override {
        channel = name;
        const ScriptValue::Dictionary* const record = body.asDictionary();
        const auto text = [record](const char* key) -> std::string {
            const auto found = record == nullptr ? decltype(record->end()){} : record->find(key);
            return record != nullptr && found != record->end() && found->second.asText() != nullptr
                       ? *found->second.asText()
                       : "?";
        };
        calls.push_back(text("type") + ": " + text("message"));
    }

    std::vector<std::string> calls;
    std::string channel;
    bool confirms = true;
    std::optional<std::string> answer = "typed";
};

class MacPage : public testing::Test {
protected:
    MacPage() {
        const auto configuration = nativePlatform().makeWebViewConfiguration();
        WebPreferences& preferences = configuration->preferences();
        for (const char* key : {"allowFileAccessFromFileURLs", "developerExtrasEnabled", "javaScriptEnabled", "noSuchKey"}) {
            preferences.setValueForKey(true, key);
        }
        preferences.setJavaScriptCanOpenWindowsAutomatically(true);
        configuration->userContentController().addScriptMessageHandler(recorder_, kConsoleChannel);
        configuration->userContentController().addUserScript(
            {std::string(bridgeScript()), UserScriptInjectionTime::atDocumentStart, /*forMainFrameOnly=*/false});
        view_ = nativePlatform().makeWebView({{0, 0}, {600, 400}}, configuration);
        view_->setNavigationDelegate(recorder_);
        view_->setUiDelegate(recorder_);
        window_->contentView()->addSubview(view_);
        window_->makeKeyAndOrderFront();
    }

    Reply reply(const std::string& head) const {
        const std::string path = head.substr(4, head.find(' ', 4) - 4);
        if (path == "/drop")
            return {""};
        if (path == "/never")
            return {"", /*keepOpen=*/true};
        if (path == "/cut")
            return {"HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nContent-Length: 900000\r\n\r\n" +
                    std::string(200'000, 'x')};
        if (path == "/500")
            return answer("<p>bad", "500 Internal Server Error");
        return answer("<title>" + path + "</title><p>page");
    }

    void load(const std::string& path, double timeout = 30) {
        view_->load({server_.address(path), CachePolicy::reloadIgnoringLocalAndRemoteCacheData, timeout});
    }
    /// Loads a page and forgets what was told about it.
    void show(const std::string& path) {
        load(path);
        EXPECT_TRUE(called(1));
        EXPECT_THAT(recorder_->calls, ElementsAre("finished"));
        recorder_->calls.clear();
    }
    bool called(std::size_t count) {
        return runUntil([this, count] { return recorder_->calls.size() >= count; });
    }
    /// Runs `script` in the page and waits for its end; the error's text, or "".
    std::string run(const std::string& script) {
        std::optional<std::string> outcome;
        view_->evaluateJavaScript(script, [&outcome](const std::optional<PlatformError>& error) {
            outcome = error ? error->localizedDescription : "";
        });
        EXPECT_TRUE(runUntil([&outcome] { return outcome.has_value(); }));
        return outcome.value_or("no completion");
    }

    RawServer server_{[this](const std::string& head) { return reply(head); }};
    std::shared_ptr<Recorder> recorder_ = std::make_shared<Recorder>();
    std::shared_ptr<Window> window_ = nativePlatform().makeWindow({{100, 100}, {600, 400}}, 15);
    std::shared_ptr<WebView> view_;
};

TEST_F(MacPage, LoadsEndInOneCallOfTheRightKind) {
    const std::pair<const char*, const char*> expected[] = {
        {"/", "finished"}, {"/500", "finished"}, {"/drop", "failed provisionally: "}, {"/cut", "failed: "}};
    for (const auto& [path, outcome] : expected) {
        SCOPED_TRACE(path);
        recorder_->calls.clear();
        load(path);
        EXPECT_TRUE(recorder_->calls.empty()) << "inside the call";
        ASSERT_TRUE(called(1));
        runFor(0.2);
        EXPECT_THAT(recorder_->calls, ElementsAre(StartsWith(outcome)));
    }
}

TEST_F(MacPage, RefusedAndImpossiblePortsFailProvisionally) {
    for (const std::string& port : {std::to_string(freePort()), std::string("-1"), std::string("70000")}) {
        SCOPED_TRACE(port);
        recorder_->calls.clear();
        view_->load({"http://localhost:" + port + "/", CachePolicy::reloadIgnoringLocalAndRemoteCacheData, 30});
        ASSERT_TRUE(called(1));
        EXPECT_THAT(recorder_->calls, ElementsAre(StartsWith("failed provisionally: ")));
    }
}

TEST_F(MacPage, SilenceEndsAtTheTimeOut) {
    const double begin = secondsNow();
    load("/never", 1);
    ASSERT_TRUE(called(1));
    EXPECT_THAT(recorder_->calls, ElementsAre(StartsWith("failed provisionally: ")));
    EXPECT_LT(secondsNow() - begin, 5);
}

TEST_F(MacPage, NewLoadCancelsTheOneBefore) {
    load("/never");
    runFor(0.2);
    load("/");
    ASSERT_TRUE(called(2));
    EXPECT_THAT(recorder_->calls, ElementsAre(StartsWith("failed provisionally: "), "finished"));
}

TEST_F(MacPage, ConsoleReachesTheHandler) {
    show("/");
    EXPECT_EQ(run("console.log('a', 1, null); console.warn('ü 🤖'); console.error()"), "");
    ASSERT_TRUE(called(3));
    EXPECT_THAT(recorder_->calls, ElementsAre("log: a 1 ", "warn: ü 🤖", "error: "));
    EXPECT_EQ(recorder_->channel, kConsoleChannel);
}

TEST_F(MacPage, ConsoleOfAFrameIsBridgedToo) {
    show("/");
    run("const f = document.createElement('iframe'); f.srcdoc = '<script>console.log(\"inner\")</script>';"
        "document.body.append(f); 0");
    ASSERT_TRUE(called(1));
    EXPECT_THAT(recorder_->calls, ElementsAre("log: inner"));
}

TEST_F(MacPage, PanelsAnswerThePage) {
    show("/");
    EXPECT_EQ(run("alert('hello'); console.log(confirm('sure?'), prompt('name', 'old'), prompt('bare'))"), "");
    ASSERT_TRUE(called(5));
    EXPECT_THAT(recorder_->calls, ElementsAre("alert: hello", "confirm: sure?", "prompt: name|old", "prompt: bare|",
                                              "log: true typed typed"));
    recorder_->calls.clear();
    recorder_->confirms = false;
    recorder_->answer.reset();
    EXPECT_EQ(run("console.log(confirm('sure?'), prompt('name') === null)"), "");
    ASSERT_TRUE(called(3));
    EXPECT_EQ(recorder_->calls.back(), "log: false true");
}

TEST_F(MacPage, PanelsOfAReceiverThatIsGoneAreAnswered) {
    show("/");
    const auto gone = std::make_shared<Recorder>();
    view_->setUiDelegate(gone);
    view_->setUiDelegate(std::weak_ptr<UiDelegate>());
    EXPECT_EQ(run("alert('x'); console.log(confirm('y'), prompt('z') === null)"), "");
    ASSERT_TRUE(called(1));
    EXPECT_THAT(recorder_->calls, ElementsAre("log: false true"));
}

TEST_F(MacPage, WindowsAreAskedForAndNeverOpened) {
    show("/");
    EXPECT_EQ(run("console.log(window.open('http://localhost:1/x') === null)"), "");
    ASSERT_TRUE(called(2));
    EXPECT_THAT(recorder_->calls, ElementsAre("window: http://localhost:1/x", "log: true"));
    EXPECT_EQ([nsViewOf(window_->contentView().get()).subviews count], 1U);
}

TEST_F(MacPage, ReloadKeepsTheZoom) {
    show("/");
    view_->setPageZoom(1.2000000000000002);
    view_->reload();
    ASSERT_TRUE(called(1));
    EXPECT_THAT(recorder_->calls, ElementsAre("finished"));
    EXPECT_EQ(view_->pageZoom(), 1.2000000000000002);
}

TEST_F(MacPage, EvaluationThatThrowsTellsItsReason) {
    show("/");
    EXPECT_NE(run("throw new Error('boom')"), "");
    EXPECT_EQ(run("window"), "") << "a value that cannot leave the page is no error";
}

} // namespace
} // namespace vantorel::mac::test
