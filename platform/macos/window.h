// Vantorel. MIT licence, see LICENSE.
// The top level window over NSWindow.
#pragma once

#include <memory>

#include "platform/appkit.h"

namespace vantorel::mac {

std::shared_ptr<Window> makeWindow(Rect contentRect, unsigned style);

}  // namespace vantorel::mac
