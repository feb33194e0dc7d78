// Vantorel. MIT licence, see LICENSE.
// HTTP without a window over the shared NSURLSession.
#pragma once

#include <memory>

#include "platform/foundation.h"

namespace vantorel::mac {

std::unique_ptr<UrlSession> makeUrlSession();

}  // namespace vantorel::mac
