// Vantorel. MIT licence, see LICENSE.
// HTTP without a window, on libsoup: no redirects, no proxy, no cookies, no cache, no credentials.
#pragma once

#include <memory>
#include <string>

#include "platform/foundation.h"

namespace vantorel::gtk {

/// A session whose tasks run in the main loop, nested loops included; completions come on the main thread.
std::unique_ptr<UrlSession> makeUrlSession();

/// Whether `text` is an address that pages and probes can be asked for; its port may be one that never answers.
bool isAddress(const std::string& text);

} // namespace vantorel::gtk
