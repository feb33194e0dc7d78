// Vantorel. MIT licence, see LICENSE.
// The application's bundle over NSBundle.
#pragma once

#include <memory>

#include "platform/foundation.h"

namespace vantorel::mac {

std::unique_ptr<Bundle> makeBundle();

}  // namespace vantorel::mac
