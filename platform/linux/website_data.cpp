// Vantorel. MIT licence, see LICENSE.
// Cookies, caches and local storage of pages, on the engine's network session.
#include "platform/linux/website_data.h"

#include <unistd.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "platform/linux/main_thread.h"

namespace vantorel::gtk {

namespace {

constexpr const char* kFolder = "Vantorel";

std::optional<std::string> writableFolder(const char* base) {
    const GText path(g_build_filename(base, kFolder, nullptr));
    if (g_mkdir_with_parents(path.get(), 0700) != 0 || ::access(path.get(), R_OK | W_OK | X_OK) != 0) {
        return std::nullopt;
    }
    return path.get();
}

/// The variable in its lower-case or upper-case spelling.
std::string variable(const char* name) {
    const char* value = g_getenv(name);
    if (value == nullptr || *value == '\0') {
        const GText upper(g_ascii_strup(name, -1));
        value = g_getenv(upper.get());
    }
    return value != nullptr && g_utf8_validate(value, -1, nullptr) != 0 ? value : "";
}

std::string withScheme(const std::string& proxy) {
    return proxy.empty() || proxy.find("://") != std::string::npos ? proxy : "http://" + proxy;
}

struct ProxySettingsFree {
    void operator()(WebKitNetworkProxySettings* settings) const { webkit_network_proxy_settings_free(settings); }
};

void setProxy(WebKitNetworkSession* session) {
    const ProxyChoice choice = proxyFromEnvironment();
    if (choice.http.empty() && choice.https.empty()) {
        webkit_network_session_set_proxy_settings(session, WEBKIT_NETWORK_PROXY_MODE_NO_PROXY, nullptr);
        return;
    }
    std::vector<const char*> direct;
    for (const std::string& host : choice.direct) {
        direct.push_back(host.c_str());
    }
    direct.push_back(nullptr);
    const std::unique_ptr<WebKitNetworkProxySettings, ProxySettingsFree> settings(
        webkit_network_proxy_settings_new("direct://", direct.data()));
    if (!choice.http.empty()) {
        webkit_network_proxy_settings_add_proxy_for_scheme(settings.get(), "http", choice.http.c_str());
    }
    if (!choice.https.empty()) {
        webkit_network_proxy_settings_add_proxy_for_scheme(settings.get(), "https", choice.https.c_str());
    }
    webkit_network_session_set_proxy_settings(session, WEBKIT_NETWORK_PROXY_MODE_CUSTOM, settings.get());
}

Object<WebKitNetworkSession> makeSession(const std::optional<WebsiteDataPlace>& place) {
    if (!place) {
        return Object<WebKitNetworkSession>::take(webkit_network_session_new_ephemeral());
    }
    auto session = Object<WebKitNetworkSession>::take(
        webkit_network_session_new(place->dataFolder.c_str(), place->cacheFolder.c_str()));
    // Cookies that outlive the session need a file of their own; the engine keeps them in memory otherwise.
    const GText cookies(g_build_filename(place->dataFolder.c_str(), "cookies.sqlite", nullptr));
    webkit_cookie_manager_set_persistent_storage(webkit_network_session_get_cookie_manager(session.get()),
                                                 cookies.get(), WEBKIT_COOKIE_PERSISTENT_STORAGE_SQLITE);
    return session;
}

struct Removal {
    std::shared_ptr<GtkWebsiteDataStore> store;
    std::function<void()> completion;
};

} // namespace

std::optional<WebsiteDataPlace> userWebsiteDataPlace() {
    std::optional<std::string> data = writableFolder(g_get_user_data_dir());
    std::optional<std::string> cache = writableFolder(g_get_user_cache_dir());
    if (!data || !cache) {
        return std::nullopt;
    }
    return WebsiteDataPlace{std::move(*data), std::move(*cache)};
}

ProxyChoice proxyFromEnvironment() {
    ProxyChoice choice;
    const std::string all = variable("all_proxy");
    const std::string http = variable("http_proxy");
    const std::string https = variable("https_proxy");
    choice.http = withScheme(http.empty() ? all : http);
    choice.https = withScheme(https.empty() ? all : https);
    choice.direct = {"localhost", "*.localhost", "127.0.0.0/8", "::1"};
    const std::string exceptions = variable("no_proxy");
    std::string host;
    for (const char letter : exceptions + ",") {
        if (letter != ',' && letter != ' ') {
            host += letter;
        } else if (!host.empty()) {
            choice.direct.push_back(std::exchange(host, {}));
        }
    }
    return choice;
}

GtkWebsiteDataStore::GtkWebsiteDataStore(const std::optional<WebsiteDataPlace>& place) : session_(makeSession(place)) {
    setProxy(session_.get());
    if (place) {
        webkit_network_session_set_persistent_credential_storage_enabled(session_.get(), FALSE);
    }
    // Nobody asked where to put a file: a page must not fill the user's folder.
    downloads_ = connect<void(WebKitDownload*)>(session_.get(), "download-started",
                                                [](WebKitDownload* download) { webkit_download_cancel(download); });
}

void GtkWebsiteDataStore::removeData(const std::set<WebsiteDataType>& types,
                                     std::chrono::system_clock::time_point since, std::function<void()> completion) {
    assertMainThread();
    unsigned kinds = 0;
    for (const WebsiteDataType type : types) {
        switch (type) {
        case WebsiteDataType::diskCache:
            kinds |= static_cast<unsigned>(WEBKIT_WEBSITE_DATA_DISK_CACHE);
            break;
        case WebsiteDataType::memoryCache:
            kinds |= static_cast<unsigned>(WEBKIT_WEBSITE_DATA_MEMORY_CACHE);
            break;
        }
    }
    // The engine counts back from now, and takes 0 for "everything".
    const auto age = std::chrono::system_clock::now() - since;
    const auto microseconds = std::chrono::duration_cast<std::chrono::microseconds>(age).count();
    const bool everything = since <= std::chrono::system_clock::time_point{};
    const GTimeSpan span = everything ? 0 : std::max<GTimeSpan>(microseconds, 1);
    webkit_website_data_manager_clear(
        webkit_network_session_get_website_data_manager(session_.get()), static_cast<WebKitWebsiteDataTypes>(kinds),
        span, nullptr,
        [](GObject* source, GAsyncResult* result, gpointer data) {
            const std::unique_ptr<Removal> removal(static_cast<Removal*>(data));
            webkit_website_data_manager_clear_finish(WEBKIT_WEBSITE_DATA_MANAGER(source), result, nullptr);
            if (removal->completion) {
                guarded(removal->completion);
            }
        },
        new Removal{shared_from_this(), std::move(completion)});
}

std::shared_ptr<WebsiteDataStore> defaultWebsiteDataStore() {
    assertMainThread();
    static std::weak_ptr<GtkWebsiteDataStore> shared;
    std::shared_ptr<GtkWebsiteDataStore> store = shared.lock();
    if (!store) {
        store = std::make_shared<GtkWebsiteDataStore>(userWebsiteDataPlace());
        shared = store;
    }
    return store;
}

} // namespace vantorel::gtk
