// Vantorel. MIT licence, see LICENSE.
// A child process over NSTask.
#pragma once

#include <memory>

#include "platform/foundation.h"

namespace vantorel::mac {

std::shared_ptr<Process> makeProcess();

}  // namespace vantorel::mac
