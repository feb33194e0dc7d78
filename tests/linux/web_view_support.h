// Vantorel. MIT licence, see LICENSE.
// What the tests of the web view share: a window with a view, and delegates that write down what they are told.
#pragma once

#include <gtest/gtest.h>
#include <gtk/gtk.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/web_view.h"
#include "tests/linux/system_support.h"
#include "tests/linux/web_support.h"

namespace vantorel::gtk::test {

/// All delegate roles in one; each call is a line in `calls`.
class Recorder : public NavigationDelegate, public UiDelegate, public ScriptMessageHandler {
public:
    void didFinishNavigation(WebView& view) override;
    void didFailNavigation(WebView& view, const PlatformError& error) override;
    void didFailProvisionalNavigation(WebView& view, const PlatformError& error) override;
    std::shared_ptr<WebView> createWebView(WebView& view, const std::optional<std::string>& address) override;
    void runAlertPanel(WebView& view, const std::string& message, std::function<void()> completion) override;
    void runConfirmPanel(WebView& view, const std::string& message, std::function<void(bool)> completion) override;
    void runTextInputPanel(WebView& view, const std::string& prompt, const std::optional<std::string>& defaultText,
                           std::function<void(std::optional<std::string>)> completion) override;
    void didReceiveScriptMessage(const std::string& name, const ScriptValue& body) override;

    std::vector<std::string> calls;
    std::vector<ScriptValue> messages;
    std::function<void(std::function<void()>)> onAlert;
    std::function<void(std::function<void(bool)>)> onConfirm;
    std::function<void(std::function<void(std::optional<std::string>)>)> onPrompt;
    /// Called for each message in place of keeping it, when set.
    std::function<void(const ScriptValue&)> onMessage;
};

/// A shown window with a web view of its own data folders, and a server.
class WebViewTest : public testing::Test {
protected:
    WebViewTest();
    ~WebViewTest() override;

    virtual void configure(GtkWebViewConfiguration& configuration);
    void makeView(bool drawsInSoftware = true);

    UrlRequest request(const std::string& path, double timeout = 30) const;
    /// Loads `path` and waits until it has finished.
    void loadPage(const std::string& path);
    /// Waits until `count` calls were recorded, and a little longer for those too many.
    void expectCalls(std::size_t count);
    /// Runs `script`; gives the error's text, or "" when there was none.
    std::string run(const std::string& script);
    /// Runs a check in the page: fails when `expression` is not true there.
    void expectInPage(const std::string& expression);

    TemporaryFolder folder_;
    RawServer server_;
    std::shared_ptr<Recorder> recorder_ = std::make_shared<Recorder>();
    std::shared_ptr<GtkWebsiteDataStore> store_;
    std::shared_ptr<GtkWebView> view_;
    GtkWidget* window_ = nullptr;
};

} // namespace vantorel::gtk::test
