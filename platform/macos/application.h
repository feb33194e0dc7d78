// Vantorel. MIT licence, see LICENSE.
// The application object over NSApplication, and the delegate that leads menu actions to the controller.
#pragma once

#include <memory>

#include "platform/appkit.h"

namespace vantorel::mac {

std::unique_ptr<Application> makeApplication();

}  // namespace vantorel::mac
