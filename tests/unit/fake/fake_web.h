// Vantorel. MIT licence, see LICENSE.
// The fake's web view and what it is made from; the test plays the engine and the page.
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/webkit.h"
#include "tests/unit/fake/fake_view.h"
#include "tests/unit/fake/record.h"

namespace vantorel::fake {

class FakeWebsiteDataStore final : public WebsiteDataStore {
public:
    explicit FakeWebsiteDataStore(Record& record) : record_(record) {}

    void removeData(const std::set<WebsiteDataType>& types, std::chrono::system_clock::time_point since,
                    std::function<void()> completion) override;

    struct Removal {
        std::set<WebsiteDataType> types;
        std::chrono::system_clock::time_point since;
        std::function<void()> completion;
    };
    std::vector<Removal> removals;

private:
    Record& record_;
};

class FakeWebViewConfiguration final : public WebViewConfiguration, WebPreferences, UserContentController {
public:
    FakeWebViewConfiguration(Record& record, std::string name) : record_(record), name_(std::move(name)) {}

    WebPreferences& preferences() override { return *this; }
    UserContentController& userContentController() override { return *this; }
    void setWebsiteDataStore(std::shared_ptr<WebsiteDataStore> store) override;

    const std::string& name() const { return name_; }
    /// The switches that were set by key.
    const std::map<std::string, bool>& switches() const { return switches_; }
    bool canOpenWindowsAutomatically() const { return canOpenWindowsAutomatically_; }
    const std::shared_ptr<WebsiteDataStore>& websiteDataStore() const { return websiteDataStore_; }
    const std::vector<UserScript>& userScripts() const { return userScripts_; }
    /// The handler of the channel `name`, or null when there is none or it is gone.
    std::shared_ptr<ScriptMessageHandler> handler(const std::string& name) const;
    /// A page posts `body` on the channel `name`. False when the channel does not exist.
    bool post(const std::string& name, const ScriptValue& body) const;

private:
    void setValueForKey(bool value, const std::string& key) override;
    void setJavaScriptCanOpenWindowsAutomatically(bool allowed) override;
    void addScriptMessageHandler(std::weak_ptr<ScriptMessageHandler> handler, const std::string& name) override;
    void addUserScript(const UserScript& script) override;

    Record& record_;
    std::string name_;
    std::map<std::string, bool> switches_;
    bool canOpenWindowsAutomatically_ = false;
    std::shared_ptr<WebsiteDataStore> websiteDataStore_;
    std::vector<UserScript> userScripts_;
    std::map<std::string, std::weak_ptr<ScriptMessageHandler>> handlers_;
};

class FakeWebView final : public FakeViewOf<WebView> {
public:
    using EvaluationCompletion = std::function<void(const std::optional<PlatformError>&)>;

    FakeWebView(Record& record, std::string name, Rect frame, std::shared_ptr<FakeWebViewConfiguration> configuration)
        : FakeViewOf(record, std::move(name), frame),
          configuration_(std::move(configuration)) {}

    void setNavigationDelegate(std::weak_ptr<NavigationDelegate> delegate) override;
    void setUiDelegate(std::weak_ptr<UiDelegate> delegate) override;
    void setAllowsBackForwardNavigationGestures(bool allowed) override;
    void load(const UrlRequest& request) override;
    void reload() override;
    double pageZoom() const override { return pageZoom_; }
    void setPageZoom(double zoom) override;
    void evaluateJavaScript(const std::string& script, EvaluationCompletion completion) override;

    FakeWebViewConfiguration& configuration() const { return *configuration_; }
    const std::vector<UrlRequest>& loads() const { return loads_; }
    int reloads() const { return reloads_; }
    const std::optional<bool>& allowsGestures() const { return allowsGestures_; }
    std::shared_ptr<NavigationDelegate> navigationDelegate() const { return navigationDelegate_.lock(); }
    std::shared_ptr<UiDelegate> uiDelegate() const { return uiDelegate_.lock(); }

    /// What the engine tells the navigation delegate; nothing when it is gone.
    void finish();
    void fail(const PlatformError& error);
    void failProvisionally(const PlatformError& error);

    /// What the page asks of the UI delegate, with the engine's own answers when it is gone.
    std::shared_ptr<WebView> openWindow(const std::optional<std::string>& address);
    void alert(const std::string& message, std::function<void()> completion);
    void confirm(const std::string& message, std::function<void(bool)> completion);
    void prompt(const std::string& prompt, const std::optional<std::string>& defaultText,
                std::function<void(std::optional<std::string>)> completion);

    /// Scripts in the order in which they were to be run.
    const std::vector<std::string>& scripts() const { return scripts_; }
    /// Ends the evaluation of the script at `index`. Ending one twice is a violation.
    void complete(std::size_t index, const std::optional<PlatformError>& error);
    /// Called at each evaluation with its index, where set.
    std::function<void(std::size_t)> onEvaluate;
    /// Lets the completions go, as the end of the platform does.
    void forgetCompletions() { completions_.clear(); }

private:
    std::shared_ptr<FakeWebViewConfiguration> configuration_;
    std::weak_ptr<NavigationDelegate> navigationDelegate_;
    std::weak_ptr<UiDelegate> uiDelegate_;
    std::optional<bool> allowsGestures_;
    std::vector<UrlRequest> loads_;
    int reloads_ = 0;
    double pageZoom_ = 1.0;
    std::vector<std::string> scripts_;
    std::vector<EvaluationCompletion> completions_;
};

} // namespace vantorel::fake
