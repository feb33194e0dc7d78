// Vantorel. MIT licence, see LICENSE.
// Addresses and requests over NSURL and NSURLRequest.
#pragma once

#import <Foundation/Foundation.h>

#include <string>

#include "platform/foundation.h"

namespace vantorel::mac {

/// Whether `text` can be taken for an address, by the rule of all platforms: NSURL takes nearly any text for one, and on
/// recent systems none with an impossible port such as -1. Requests for those fail.
bool isAddress(const std::string& text);

/// nil when no NSURL can be formed.
NSURLRequest* toURLRequest(const UrlRequest& request);

/// What a request without an NSURL fails with.
NSError* badAddressError();

}  // namespace vantorel::mac
