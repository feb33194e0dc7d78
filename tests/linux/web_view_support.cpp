// Vantorel. MIT licence, see LICENSE.
// What the tests of the web view share: a window with a view, and delegates that write down what they are told.
#include "tests/linux/web_view_support.h"

namespace vantorel::gtk::test {

using namespace std::chrono_literals;

void Recorder::didFinishNavigation(WebView& /*view*/) { calls.emplace_back("finished"); }

void Recorder::didFailNavigation(WebView& /*view*/, const PlatformError& error) {
    calls.push_back("failed: " + error.localizedDescription);
}

void Recorder::didFailProvisionalNavigation(WebView& /*view*/, const PlatformError& error) {
    calls.push_back("failed provisionally: " + error.localizedDescription);
}

std::shared_ptr<WebView> Recorder::createWebView(WebView& /*view*/, const std::optional<std::string>& address) {
    calls.push_back("window: " + address.value_or("(none)"));
    return nullptr;
}

void Recorder::runAlertPanel(WebView& /*view*/, const std::string& message, std::function<void()> completion) {
    calls.push_back("alert: " + message);
    onAlert ? onAlert(std::move(completion)) : completion();
}

void Recorder::runConfirmPanel(WebView& /*view*/, const std::string& message, std::function<void(bool)> completion) {
    calls.push_back("confirm: " + message);
    onConfirm ? onConfirm(std::move(completion)) : completion(true);
}

void Recorder::runTextInputPanel(WebView& /*view*/, const std::string& prompt,
                                 const std::optional<std::string>& defaultText,
                                 std::function<void(std::optional<std::string>)> completion) {
    calls.push_back("prompt: " + prompt + ", " + (defaultText ? "\"" + *defaultText + "\"" : "(none)"));
    onPrompt ? onPrompt(std::move(completion)) : completion("text");
}

void Recorder::didReceiveScriptMessage(const std::string& name, const ScriptValue& body) {
    EXPECT_EQ(name, "consoleLog");
    onMessage ? onMessage(body) : messages.push_back(body);
}

WebViewTest::WebViewTest() {
    store_ = std::make_shared<GtkWebsiteDataStore>(WebsiteDataPlace{folder_.file("data"), folder_.file("cache")});
}

WebViewTest::~WebViewTest() {
    if (window_ != nullptr) {
        gtk_window_destroy(GTK_WINDOW(window_));
    }
    view_.reset();
    // The engine's network process goes with its last session; a session that begins in that moment would lose it.
    static std::shared_ptr<GtkWebsiteDataStore> kept;
    kept = std::move(store_);
    runFor(20ms);
}

void WebViewTest::configure(GtkWebViewConfiguration& configuration) {
    configuration.preferences().setValueForKey(true, "allowFileAccessFromFileURLs");
    configuration.preferences().setValueForKey(true, "developerExtrasEnabled");
    configuration.preferences().setJavaScriptCanOpenWindowsAutomatically(true);
    configuration.preferences().setValueForKey(true, "javaScriptEnabled");
    configuration.userContentController().addScriptMessageHandler(recorder_, "consoleLog");
}

void WebViewTest::makeView(bool drawsInSoftware) {
    const auto configuration = std::make_shared<GtkWebViewConfiguration>();
    configuration->setWebsiteDataStore(store_);
    configure(*configuration);
    view_ = std::make_shared<GtkWebView>(Rect{{0, 0}, {400, 300}}, configuration, drawsInSoftware);
    view_->setNavigationDelegate(recorder_);
    view_->setUiDelegate(recorder_);
    view_->setAllowsBackForwardNavigationGestures(false);
    window_ = gtk_window_new();
    gtk_window_set_default_size(GTK_WINDOW(window_), 400, 300);
    gtk_window_set_child(GTK_WINDOW(window_), view_->core().widget());
    gtk_window_present(GTK_WINDOW(window_));
}

UrlRequest WebViewTest::request(const std::string& path, double timeout) const {
    UrlRequest request;
    request.address = server_.address(path);
    request.cachePolicy = CachePolicy::reloadIgnoringLocalAndRemoteCacheData;
    request.timeoutSeconds = timeout;
    return request;
}

void WebViewTest::loadPage(const std::string& path) {
    const std::size_t before = recorder_->calls.size();
    view_->load(request(path));
    ASSERT_TRUE(runUntil([&] { return recorder_->calls.size() > before; }));
    ASSERT_EQ(recorder_->calls.back(), "finished");
    recorder_->calls.clear();
}

void WebViewTest::expectCalls(std::size_t count) {
    EXPECT_TRUE(runUntil([&] { return recorder_->calls.size() >= count; }));
    runFor(150ms);
    EXPECT_EQ(recorder_->calls.size(), count) << testing::PrintToString(recorder_->calls);
    recorder_->calls.resize(count, "(no call)");
}

std::string WebViewTest::run(const std::string& script) {
    int completions = 0;
    std::string text;
    view_->evaluateJavaScript(script, [&](const std::optional<PlatformError>& error) {
        ++completions;
        text = error ? error->localizedDescription : "";
    });
    EXPECT_EQ(completions, 0) << "inside the call";
    EXPECT_TRUE(runUntil([&] { return completions > 0; }));
    EXPECT_EQ(completions, 1);
    return text;
}

void WebViewTest::expectInPage(const std::string& expression) {
    EXPECT_EQ(run("if (!(" + expression + ")) throw 'not so'"), "") << expression;
}

} // namespace vantorel::gtk::test
