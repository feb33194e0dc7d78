// Vantorel. MIT licence, see LICENSE.
// The user's preferences over NSUserDefaults.
#pragma once

#include <memory>

#include "platform/foundation.h"

namespace vantorel::mac {

std::unique_ptr<UserDefaults> makeUserDefaults();

}  // namespace vantorel::mac
