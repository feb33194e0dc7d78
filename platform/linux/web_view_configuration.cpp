// Vantorel. MIT licence, see LICENSE.
// What a web view is made from, kept as plain data until a view is made.
#include "platform/linux/web_view_configuration.h"

namespace vantorel::gtk {

void GtkWebPreferences::setValueForKey(bool value, const std::string& key) {
    if (key == "allowFileAccessFromFileURLs") {
        allowsFileAccessFromFileUrls_ = value;
    } else if (key == "developerExtrasEnabled") {
        developerExtras_ = value;
    } else if (key == "javaScriptEnabled") {
        javaScript_ = value;
    }
}

void GtkWebPreferences::setJavaScriptCanOpenWindowsAutomatically(bool allowed) { opensWindowsAutomatically_ = allowed; }

Object<WebKitSettings> GtkWebPreferences::makeSettings() const {
    auto settings = Object<WebKitSettings>::take(webkit_settings_new());
    webkit_settings_set_allow_file_access_from_file_urls(settings.get(), allowsFileAccessFromFileUrls_);
    webkit_settings_set_enable_developer_extras(settings.get(), developerExtras_);
    webkit_settings_set_enable_javascript(settings.get(), javaScript_);
    webkit_settings_set_javascript_can_open_windows_automatically(settings.get(), opensWindowsAutomatically_);
    // A page has its rectangle below the status strip and stays there.
    webkit_settings_set_enable_fullscreen(settings.get(), FALSE);
    return settings;
}

void GtkUserContentController::addScriptMessageHandler(std::weak_ptr<ScriptMessageHandler> handler,
                                                       const std::string& name) {
    handlers_.push_back({std::move(handler), name});
}

void GtkUserContentController::addUserScript(const UserScript& script) { scripts_.push_back(script); }

std::shared_ptr<GtkWebsiteDataStore> GtkWebViewConfiguration::websiteDataStore() const {
    const std::shared_ptr<WebsiteDataStore> store = store_ != nullptr ? store_ : defaultWebsiteDataStore();
    return std::dynamic_pointer_cast<GtkWebsiteDataStore>(store);
}

std::shared_ptr<WebViewConfiguration> makeWebViewConfiguration() { return std::make_shared<GtkWebViewConfiguration>(); }

} // namespace vantorel::gtk
