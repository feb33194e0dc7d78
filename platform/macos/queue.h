// Vantorel. MIT licence, see LICENSE.
// The main queue and the global queue over Dispatch.
#pragma once

#include <memory>

#include "platform/dispatch.h"

namespace vantorel::mac {

std::unique_ptr<Queue> makeMainQueue();
std::unique_ptr<Queue> makeGlobalQueue();

}  // namespace vantorel::mac
