// Vantorel. MIT licence, see LICENSE.
// What a web view is made from, kept as plain data until a view is made.
#pragma once

#include <webkit/webkit.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/object.h"
#include "platform/linux/website_data.h"
#include "platform/webkit.h"

namespace vantorel::gtk {

class GtkWebPreferences : public WebPreferences {
public:
    void setValueForKey(bool value, const std::string& key) override;
    void setJavaScriptCanOpenWindowsAutomatically(bool allowed) override;

    /// The engine's settings for a view.
    Object<WebKitSettings> makeSettings() const;

private:
    bool allowsFileAccessFromFileUrls_ = false;
    bool developerExtras_ = false;
    bool javaScript_ = true;
    bool opensWindowsAutomatically_ = false;
};

class GtkUserContentController : public UserContentController {
public:
    struct Handler {
        std::weak_ptr<ScriptMessageHandler> handler;
        std::string name;
    };

    void addScriptMessageHandler(std::weak_ptr<ScriptMessageHandler> handler, const std::string& name) override;
    void addUserScript(const UserScript& script) override;

    const std::vector<Handler>& handlers() const { return handlers_; }
    const std::vector<UserScript>& scripts() const { return scripts_; }

private:
    std::vector<Handler> handlers_;
    std::vector<UserScript> scripts_;
};

class GtkWebViewConfiguration : public WebViewConfiguration {
public:
    GtkWebPreferences& preferences() override { return preferences_; }
    GtkUserContentController& userContentController() override { return userContentController_; }
    void setWebsiteDataStore(std::shared_ptr<WebsiteDataStore> store) override { store_ = std::move(store); }

    /// The store that was set, or the default one.
    std::shared_ptr<GtkWebsiteDataStore> websiteDataStore() const;

private:
    GtkWebPreferences preferences_;
    GtkUserContentController userContentController_;
    std::shared_ptr<WebsiteDataStore> store_;
};

std::shared_ptr<WebViewConfiguration> makeWebViewConfiguration();

} // namespace vantorel::gtk
