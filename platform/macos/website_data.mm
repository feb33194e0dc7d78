// Vantorel. MIT licence, see LICENSE.
// Cookies, caches and local storage over WKWebsiteDataStore.
#import "platform/macos/website_data.h"

#import "platform/macos/bridge.h"

namespace vantorel::mac {

namespace {

NSString* nameOf(WebsiteDataType type) {
    switch (type) {
        case WebsiteDataType::diskCache:
            return WKWebsiteDataTypeDiskCache;
        case WebsiteDataType::memoryCache:
            return WKWebsiteDataTypeMemoryCache;
    }
    return WKWebsiteDataTypeDiskCache;
}

class MacWebsiteDataStore : public WebsiteDataStore {
public:
    void removeData(const std::set<WebsiteDataType>& types, std::chrono::system_clock::time_point since,
                    std::function<void()> completion) override {
        NSMutableSet<NSString*>* const names = [NSMutableSet set];
        for (const WebsiteDataType type : types) [names addObject:nameOf(type)];
        const double seconds = std::chrono::duration<double>(since.time_since_epoch()).count();
        [WKWebsiteDataStore.defaultDataStore removeDataOfTypes:names
                                                 modifiedSince:[NSDate dateWithTimeIntervalSince1970:seconds]
                                             completionHandler:^{
                                                 guarded(completion);
                                             }];
    }
};

}  // namespace

std::shared_ptr<WebsiteDataStore> defaultWebsiteDataStore() {
    return std::make_shared<MacWebsiteDataStore>();
}

}  // namespace vantorel::mac
