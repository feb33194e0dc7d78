// Vantorel. MIT licence, see LICENSE.
// The application's own environment over NSProcessInfo.
#pragma once

#include <memory>

#include "platform/foundation.h"

namespace vantorel::mac {

std::unique_ptr<ProcessInfo> makeProcessInfo();

}  // namespace vantorel::mac
