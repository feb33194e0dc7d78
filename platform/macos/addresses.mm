// Vantorel. MIT licence, see LICENSE.
// Addresses and requests over NSURL and NSURLRequest.
#import "platform/macos/addresses.h"

#import "platform/macos/bridge.h"
#include "platform/portable/address_text.h"

namespace vantorel::mac {

bool isAddress(const std::string& text) {
    return isLoadableAddress(text);
}

NSURLRequest* toURLRequest(const UrlRequest& request) {
    NSURL* const url = [NSURL URLWithString:toNSString(request.address)];
    if (url == nil) return nil;
    NSMutableURLRequest* const urlRequest = [NSMutableURLRequest requestWithURL:url];
    urlRequest.cachePolicy = static_cast<NSURLRequestCachePolicy>(request.cachePolicy);
    urlRequest.timeoutInterval = request.timeoutSeconds;
    return urlRequest;
}

NSError* badAddressError() {
    return [NSError errorWithDomain:NSURLErrorDomain code:NSURLErrorBadURL userInfo:nil];
}

}  // namespace vantorel::mac
