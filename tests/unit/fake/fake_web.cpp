// Vantorel. MIT licence, see LICENSE.
// The fake's web view and what it is made from.
#include "tests/unit/fake/fake_web.h"

namespace vantorel::fake {

void FakeWebsiteDataStore::removeData(const std::set<WebsiteDataType>& types,
                                      std::chrono::system_clock::time_point since, std::function<void()> completion) {
    std::string kinds;
    for (const WebsiteDataType type : types)
        kinds += type == WebsiteDataType::diskCache ? "disk " : "memory ";
    const auto seconds = std::chrono::duration<double>(since.time_since_epoch()).count();
    record_.addOnMain("websiteDataStore.removeData(" + kinds + "since " + shown(seconds) + ")");
    removals.push_back({.types = types, .since = since, .completion = std::move(completion)});
}

void FakeWebViewConfiguration::setWebsiteDataStore(std::shared_ptr<WebsiteDataStore> store) {
    record_.addOnMain(name_ + ".setWebsiteDataStore()");
    websiteDataStore_ = std::move(store);
}

void FakeWebViewConfiguration::setValueForKey(bool value, const std::string& key) {
    record_.addOnMain(name_ + ".preferences.setValueForKey(" + shown(value) + ", " + quoted(key) + ")");
    switches_[key] = value;
}

void FakeWebViewConfiguration::setJavaScriptCanOpenWindowsAutomatically(bool allowed) {
    record_.addOnMain(name_ + ".preferences.setJavaScriptCanOpenWindowsAutomatically(" + shown(allowed) + ")");
    canOpenWindowsAutomatically_ = allowed;
}

void FakeWebViewConfiguration::addScriptMessageHandler(std::weak_ptr<ScriptMessageHandler> handler,
                                                       const std::string& name) {
    record_.addOnMain(name_ + ".userContentController.addScriptMessageHandler(" + quoted(name) + ")");
    handlers_[name] = std::move(handler);
}

void FakeWebViewConfiguration::addUserScript(const UserScript& script) {
    record_.addOnMain(
        name_ + ".userContentController.addUserScript(" + std::to_string(script.source.size()) + " bytes, " +
        (script.injectionTime == UserScriptInjectionTime::atDocumentStart ? "document start, " : "document end, ") +
        (script.forMainFrameOnly ? "main frame)" : "all frames)"));
    userScripts_.push_back(script);
}

std::shared_ptr<ScriptMessageHandler> FakeWebViewConfiguration::handler(const std::string& name) const {
    const auto found = handlers_.find(name);
    return found == handlers_.end() ? nullptr : found->second.lock();
}

bool FakeWebViewConfiguration::post(const std::string& name, const ScriptValue& body) const {
    if (!handlers_.contains(name))
        return false;
    if (const auto receiver = handler(name))
        receiver->didReceiveScriptMessage(name, body);
    return true;
}

void FakeWebView::setNavigationDelegate(std::weak_ptr<NavigationDelegate> delegate) {
    record().addOnMain(name() + ".setNavigationDelegate()");
    navigationDelegate_ = std::move(delegate);
}

void FakeWebView::setUiDelegate(std::weak_ptr<UiDelegate> delegate) {
    record().addOnMain(name() + ".setUiDelegate()");
    uiDelegate_ = std::move(delegate);
}

void FakeWebView::setAllowsBackForwardNavigationGestures(bool allowed) {
    record().addOnMain(name() + ".setAllowsBackForwardNavigationGestures(" + shown(allowed) + ")");
    allowsGestures_ = allowed;
}

void FakeWebView::load(const UrlRequest& request) {
    record().addOnMain(name() + ".load(" + quoted(request.address) + ", cache " +
                       std::to_string(static_cast<unsigned>(request.cachePolicy)) + ", " +
                       shown(request.timeoutSeconds) + " s)");
    loads_.push_back(request);
}

void FakeWebView::reload() {
    record().addOnMain(name() + ".reload()");
    ++reloads_;
}

void FakeWebView::setPageZoom(double zoom) {
    record().addOnMain(name() + ".setPageZoom(" + shown(zoom) + ")");
    pageZoom_ = zoom;
}

void FakeWebView::evaluateJavaScript(const std::string& script, EvaluationCompletion completion) {
    record().addOnMain(name() + ".evaluateJavaScript(" + std::to_string(script.size()) + " bytes)");
    scripts_.push_back(script);
    completions_.push_back(std::move(completion));
    if (onEvaluate)
        onEvaluate(scripts_.size() - 1);
}

void FakeWebView::complete(std::size_t index, const std::optional<PlatformError>& error) {
    const EvaluationCompletion completion = std::exchange(completions_.at(index), nullptr);
    if (!completion) {
        record().addViolation("an evaluation ended twice");
        return;
    }
    completion(error);
}

void FakeWebView::finish() {
    if (const auto delegate = navigationDelegate())
        delegate->didFinishNavigation(*this);
}

void FakeWebView::fail(const PlatformError& error) {
    if (const auto delegate = navigationDelegate())
        delegate->didFailNavigation(*this, error);
}

void FakeWebView::failProvisionally(const PlatformError& error) {
    if (const auto delegate = navigationDelegate())
        delegate->didFailProvisionalNavigation(*this, error);
}

std::shared_ptr<WebView> FakeWebView::openWindow(const std::optional<std::string>& address) {
    const auto delegate = uiDelegate();
    return delegate ? delegate->createWebView(*this, address) : nullptr;
}

void FakeWebView::alert(const std::string& message, std::function<void()> completion) {
    const auto delegate = uiDelegate();
    if (!delegate)
        return completion();
    delegate->runAlertPanel(*this, message, std::move(completion));
}

void FakeWebView::confirm(const std::string& message, std::function<void(bool)> completion) {
    const auto delegate = uiDelegate();
    if (!delegate)
        return completion(false);
    delegate->runConfirmPanel(*this, message, std::move(completion));
}

void FakeWebView::prompt(const std::string& prompt, const std::optional<std::string>& defaultText,
                         std::function<void(std::optional<std::string>)> completion) {
    const auto delegate = uiDelegate();
    if (!delegate)
        return completion(std::nullopt);
    delegate->runTextInputPanel(*this, prompt, defaultText, std::move(completion));
}

} // namespace vantorel::fake
