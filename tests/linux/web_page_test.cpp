// Vantorel. MIT licence, see LICENSE.
// The page and the application: scripts, zoom, messages, panels, new windows.
#include "tests/linux/web_view_support.h"

#include <limits>

#include <gdk/x11/gdkx.h>

#include "tests/linux/key_driver.h"

namespace vantorel::gtk::test {
namespace {

using namespace std::chrono_literals;

class WebPageTest : public WebViewTest {
protected:
    void SetUp() override {
        makeView();
        server_.page("/", "<meta charset=utf-8><title>page</title><p id=p>hello");
    }

    bool waitForCalls(std::size_t count) {
        return runUntil([this, count] { return recorder_->calls.size() >= count; });
    }
};

// Keys

TEST_F(WebPageTest, WhatIsTypedIsThePagesAlone) {
    server_.page("/", "<input id=i autofocus>");
    loadPage("/");
    KeyDriver driver;
    ASSERT_TRUE(driver);
    driver.focus(gdk_x11_surface_get_xid(gtk_native_get_surface(GTK_NATIVE(window_))));
    gtk_widget_grab_focus(GTK_WIDGET(view_->engineView()));
    ASSERT_TRUE(runUntil([this] { return gtk_window_is_active(GTK_WINDOW(window_)) != FALSE; }));
    for (const unsigned key : {keys::kA, keys::kS, keys::kZ}) {
        driver.tap(key);
    }
    EXPECT_TRUE(runUntil([this] { return run("if (document.getElementById('i').value !== 'asz') throw 0").empty(); }));
    for (GtkWidget* child = gtk_widget_get_first_child(GTK_WIDGET(view_->engineView())); child != nullptr;
         child = gtk_widget_get_next_sibling(child)) {
        if (GTK_IS_TEXT_VIEW(child)) {
            EXPECT_EQ(gtk_text_buffer_get_char_count(gtk_text_view_get_buffer(GTK_TEXT_VIEW(child))), 0);
        }
    }
}

// Scripts

TEST_F(WebPageTest, ScriptsRunBeforeAnyLoad) {
    EXPECT_EQ(run("1 + 1"), "");
    EXPECT_EQ(run("var before = 5"), "");
    expectInPage("before === 5");
}

TEST_F(WebPageTest, ScriptsRunInThePagesGlobalScope) {
    server_.page("/", "<script>var fromPage = 1;</script>");
    loadPage("/");
    EXPECT_EQ(run("fromPage = fromPage + 1; var fromScript = '✅ 😀'"), "");
    expectInPage("window.fromPage === 2 && window.fromScript === '✅ 😀'");
}

TEST_F(WebPageTest, AScriptThatThrowsGivesItsMessage) {
    loadPage("/");
    EXPECT_NE(run("throw new Error('my text')").find("my text"), std::string::npos);
    EXPECT_NE(run("nothing.here").find("nothing"), std::string::npos);
    EXPECT_NE(run("}{"), "");
}

TEST_F(WebPageTest, AValueThatCannotLeaveThePageIsNoError) {
    loadPage("/");
    for (const char* script : {"document.body", "window", "Promise.resolve(1)", "(function() {})", "Symbol('x')",
                               "let o = {}; o.o = o; o", "undefined", "1 // a comment", "if (true) { 1 }", ""}) {
        EXPECT_EQ(run(script), "") << script;
    }
}

TEST_F(WebPageTest, EvaluationsCompleteInOrder) {
    loadPage("/");
    std::string order;
    for (char letter = 'a'; letter <= 'j'; ++letter) {
        view_->evaluateJavaScript("1", [&order, letter](const auto&) { order += letter; });
    }
    EXPECT_TRUE(runUntil([&] { return order.size() == 10; }));
    EXPECT_EQ(order, "abcdefghij");
}

TEST_F(WebPageTest, APageProcessThatDiesMeanwhileIsAnError) {
    loadPage("/");
    std::vector<std::optional<PlatformError>> outcomes;
    view_->evaluateJavaScript("for (;;) {}", [&](const auto& error) { outcomes.push_back(error); });
    view_->evaluateJavaScript("1", [&](const auto& error) { outcomes.push_back(error); });
    runFor(100ms);
    EXPECT_TRUE(outcomes.empty());
    webkit_web_view_terminate_web_process(view_->engineView());
    EXPECT_TRUE(runUntil([&] { return outcomes.size() == 2; }));
    runFor(100ms);
    ASSERT_EQ(outcomes.size(), 2U);
    EXPECT_TRUE(outcomes.at(0));
    EXPECT_TRUE(outcomes.at(1));
}

TEST_F(WebPageTest, AnEvaluationCompletesWhenTheViewGoes) {
    loadPage("/");
    int completions = 0;
    view_->evaluateJavaScript("for (;;) {}", [&](const auto&) { ++completions; });
    runFor(50ms);
    gtk_window_destroy(GTK_WINDOW(window_));
    window_ = nullptr;
    view_.reset();
    EXPECT_TRUE(runUntil([&] { return completions > 0; }));
    runFor(100ms);
    EXPECT_EQ(completions, 1);
}

// Zoom

TEST_F(WebPageTest, ZoomIsKeptExactly) {
    EXPECT_EQ(view_->pageZoom(), 1.0);
    double zoom = 1.0;
    for (int i = 0; i < 5; ++i) {
        zoom -= 0.1;
        view_->setPageZoom(zoom);
        EXPECT_EQ(view_->pageZoom(), zoom);
        EXPECT_EQ(webkit_web_view_get_zoom_level(view_->engineView()), zoom);
    }
    EXPECT_EQ(view_->pageZoom(), 0.5000000000000001);
}

TEST_F(WebPageTest, ZoomReachesThePageAndOutlivesAReload) {
    loadPage("/");
    run("document.cookie = 'width=' + innerWidth");
    view_->setPageZoom(2.0);
    const std::string isZoomed = "document.cookie === 'width=' + innerWidth * 2";
    EXPECT_TRUE(runUntil([&] { return run("if (!(" + isZoomed + ")) throw 1").empty(); }));
    view_->reload();
    expectCalls(1);
    EXPECT_EQ(view_->pageZoom(), 2.0);
    expectInPage(isZoomed);
}

TEST_F(WebPageTest, AZoomThatIsNoneIsNotTaken) {
    view_->setPageZoom(1.5);
    for (const double zoom :
         {0.0, -1.0, std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        view_->setPageZoom(zoom);
        EXPECT_EQ(view_->pageZoom(), 1.5);
    }
}

// Panels

TEST_F(WebPageTest, AlertConfirmAndPromptReachTheDelegate) {
    loadPage("/");
    run("alert('a\\nb 😀'); var c = confirm('sure?'); var p = prompt('name?', 'x'); var q = prompt('none?')");
    EXPECT_EQ(recorder_->calls, (std::vector<std::string>{"alert: a\nb 😀", "confirm: sure?", "prompt: name?, \"x\"",
                                                          "prompt: none?, \"\""}));
    expectInPage("c === true && p === 'text' && q === 'text'");
}

TEST_F(WebPageTest, AnswersReachThePage) {
    loadPage("/");
    recorder_->onConfirm = [](const auto& completion) { completion(false); };
    recorder_->onPrompt = [](const auto& completion) { completion(std::nullopt); };
    run("var c = confirm('sure?'); var p = prompt('name?', 'x')");
    expectInPage("c === false && p === null");
    recorder_->onPrompt = [](const auto& completion) { completion(""); };
    run("p = prompt('name?', 'x')");
    expectInPage("p === ''");
    recorder_->onPrompt = [](const auto& completion) { completion(std::string(1 << 20, 'x')); };
    run("p = prompt('name?', 'x')");
    expectInPage("p.length === 1048576");
}

TEST_F(WebPageTest, AnswersMayComeLater) {
    loadPage("/");
    std::function<void(bool)> answer;
    recorder_->onConfirm = [&](std::function<void(bool)> completion) { answer = std::move(completion); };
    bool done = false;
    view_->evaluateJavaScript("var c = confirm('sure?')", [&](const auto&) { done = true; });
    ASSERT_TRUE(runUntil([&] { return answer != nullptr; }));
    runFor(100ms);
    EXPECT_FALSE(done);
    answer(true);
    answer(false);
    EXPECT_TRUE(runUntil([&] { return done; }));
    expectInPage("c === true");
}

TEST_F(WebPageTest, AQuestionThatNobodyAnswersIsDismissed) {
    loadPage("/");
    recorder_->onConfirm = [](const auto&) {};
    recorder_->onPrompt = [](const auto&) {};
    recorder_->onAlert = [](const auto&) {};
    run("alert('a'); var c = confirm('sure?'); var p = prompt('name?', 'x')");
    expectInPage("c === false && p === null");
    view_->setUiDelegate(std::weak_ptr<UiDelegate>());
    run("alert('a'); c = confirm('sure?'); p = prompt('name?', 'x')");
    expectInPage("c === false && p === null");
}

TEST_F(WebPageTest, AnAnswerInsideANestedLoopIsTaken) {
    loadPage("/");
    recorder_->onConfirm = [](const auto& completion) {
        runFor(100ms);
        completion(true);
    };
    run("var c = confirm('sure?')");
    expectInPage("c === true");
}

TEST_F(WebPageTest, TheViewMayGoWhileAPanelIsUp) {
    loadPage("/");
    std::function<void()> answer;
    recorder_->onAlert = [&](std::function<void()> completion) { answer = std::move(completion); };
    view_->evaluateJavaScript("alert('a')", [](const auto&) {});
    ASSERT_TRUE(runUntil([&] { return answer != nullptr; }));
    gtk_window_destroy(GTK_WINDOW(window_));
    window_ = nullptr;
    view_.reset();
    runFor(50ms);
    answer();
    answer = nullptr;
    runFor(50ms);
}

TEST_F(WebPageTest, ThePageProcessMayDieWhileAPanelIsUp) {
    loadPage("/");
    std::function<void()> answer;
    recorder_->onAlert = [&](std::function<void()> completion) { answer = std::move(completion); };
    view_->evaluateJavaScript("alert('a')", [](const auto&) {});
    ASSERT_TRUE(runUntil([&] { return answer != nullptr; }));
    webkit_web_view_terminate_web_process(view_->engineView());
    runFor(100ms);
    answer();
    EXPECT_TRUE(runUntil([&] { return recorder_->calls.back() == "finished"; }));
    EXPECT_EQ(run("1"), "");
}

// New windows

TEST_F(WebPageTest, WindowsAndTargetsAskOnceEach) {
    server_.page("/", "<a id=a target=_blank href='https://example.org/a?b=c#d'>x</a>"
                      "<a id=b target=_blank href='/rel'>x</a>");
    loadPage("/");
    run("window.open('https://example.org/x')");
    ASSERT_TRUE(waitForCalls(1));
    run("document.getElementById('a').click()");
    ASSERT_TRUE(waitForCalls(2));
    run("document.getElementById('b').click()");
    ASSERT_TRUE(waitForCalls(3));
    runFor(200ms);
    EXPECT_EQ(recorder_->calls,
              (std::vector<std::string>{"window: https://example.org/x", "window: https://example.org/a?b=c#d",
                                        "window: " + server_.address("/rel")}));
    expectInPage("location.pathname === '/'");
}

TEST_F(WebPageTest, PagesOpenWindowsWithoutAGesture) {
    server_.page("/", "<script>setTimeout(() => { opened = window.open('https://example.org/') }, 50)</script>");
    view_->load(request("/"));
    EXPECT_TRUE(runUntil(
        [&] { return !recorder_->calls.empty() && recorder_->calls.back() == "window: https://example.org/"; }));
    expectInPage("opened === null");
}

TEST_F(WebPageTest, AddressesOfEveryKindArePassedOn) {
    loadPage("/");
    const std::vector<std::pair<std::string, std::string>> addresses{{"", "(none)"},
                                                                     {"'about:blank'", "about:blank"},
                                                                     {"'javascript:alert(1)'", "javascript:alert(1)"},
                                                                     {"'mailto:a@example.org'", "mailto:a@example.org"},
                                                                     {"'unknown-scheme:x'", "unknown-scheme:x"},
                                                                     {"'data:text/html,x'", "data:text/html,x"}};
    for (const auto& [argument, expected] : addresses) {
        recorder_->calls.clear();
        run("window.open(" + argument + ")");
        runUntil([&] { return !recorder_->calls.empty(); }, 1s);
        runFor(50ms);
        EXPECT_EQ(recorder_->calls, std::vector<std::string>{"window: " + expected}) << argument;
    }
}

// Scripts of the application's own in every frame

class UserScriptTest : public WebPageTest {
protected:
    void configure(GtkWebViewConfiguration& configuration) override {
        WebPageTest::configure(configuration);
        UserScript script;
        script.source = "window.webkit.messageHandlers.consoleLog.postMessage('start of ' + location.pathname)";
        script.forMainFrameOnly = false;
        configuration.userContentController().addUserScript(script);
        script.source = "window.webkit.messageHandlers.consoleLog.postMessage('main ' + typeof early)";
        script.forMainFrameOnly = true;
        configuration.userContentController().addUserScript(script);
    }
};

TEST_F(UserScriptTest, RunsAtTheStartInTheFramesItIsFor) {
    server_.page("/", "<script>early = 1</script><iframe src=/inner></iframe>");
    server_.page("/inner", "<p>inner");
    loadPage("/");
    const auto text = [](const char* value) { return ScriptValue{std::string(value)}; };
    EXPECT_EQ(recorder_->messages,
              (std::vector<ScriptValue>{text("start of /"), text("main undefined"), text("start of /inner")}));
}

TEST_F(WebPageTest, PreferencesReachTheEngine) {
    EXPECT_TRUE(webkit_settings_get_enable_javascript(webkit_web_view_get_settings(view_->engineView())));
    EXPECT_TRUE(webkit_settings_get_enable_developer_extras(webkit_web_view_get_settings(view_->engineView())));
    EXPECT_TRUE(
        webkit_settings_get_allow_file_access_from_file_urls(webkit_web_view_get_settings(view_->engineView())));
    EXPECT_TRUE(webkit_settings_get_javascript_can_open_windows_automatically(
        webkit_web_view_get_settings(view_->engineView())));
    EXPECT_FALSE(
        webkit_settings_get_enable_back_forward_navigation_gestures(webkit_web_view_get_settings(view_->engineView())));
}

} // namespace
} // namespace vantorel::gtk::test
