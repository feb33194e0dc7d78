// Vantorel. MIT licence, see LICENSE.
// Cookies, caches and local storage of pages, on the engine's network session.
#pragma once

#include <webkit/webkit.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/object.h"
#include "platform/webkit.h"

namespace vantorel::gtk {

/// Where pages' data is kept.
struct WebsiteDataPlace {
    std::string dataFolder;
    std::string cacheFolder;
};

/// $XDG_DATA_HOME/Vantorel and $XDG_CACHE_HOME/Vantorel, made if need be; nothing when one of them cannot be written.
std::optional<WebsiteDataPlace> userWebsiteDataPlace();

/// The proxy that the environment asks for, and the hosts that are reached without it: loopback always.
struct ProxyChoice {
    /// Empty for no proxy.
    std::string http;
    std::string https;
    std::vector<std::string> direct;
};
ProxyChoice proxyFromEnvironment();

/// A store that an engine's session is behind.
class GtkWebsiteDataStore : public WebsiteDataStore, public std::enable_shared_from_this<GtkWebsiteDataStore> {
public:
    /// Without a place all data lives in memory and ends with the session.
    explicit GtkWebsiteDataStore(const std::optional<WebsiteDataPlace>& place);

    void removeData(const std::set<WebsiteDataType>& types, std::chrono::system_clock::time_point since,
                    std::function<void()> completion) override;

    WebKitNetworkSession* session() const { return session_.get(); }

private:
    Object<WebKitNetworkSession> session_;
    SignalConnection downloads_;
};

/// The store of the user's data. The same one for as long as somebody holds it, and one for each process: two sessions
/// must not share a folder.
std::shared_ptr<WebsiteDataStore> defaultWebsiteDataStore();

} // namespace vantorel::gtk
