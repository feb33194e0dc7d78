// Vantorel. MIT licence, see LICENSE.
// Application-modal message boxes over NSAlert.
#pragma once

#include <memory>

#include "platform/appkit.h"

namespace vantorel::mac {

std::shared_ptr<Alert> makeAlert();

}  // namespace vantorel::mac
