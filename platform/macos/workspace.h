// Vantorel. MIT licence, see LICENSE.
// The user's desktop over NSWorkspace.
#pragma once

#include <memory>

#include "platform/appkit.h"

namespace vantorel::mac {

std::unique_ptr<Workspace> makeWorkspace();

}  // namespace vantorel::mac
