// Vantorel. MIT licence, see LICENSE.
// Cookies, caches and local storage over WKWebsiteDataStore.
#pragma once

#import <WebKit/WebKit.h>

#include <memory>

#include "platform/webkit.h"

namespace vantorel::mac {

std::shared_ptr<WebsiteDataStore> defaultWebsiteDataStore();

}  // namespace vantorel::mac
