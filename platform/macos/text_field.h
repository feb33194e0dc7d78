// Vantorel. MIT licence, see LICENSE.
// A line of text over NSTextField.
#pragma once

#include <memory>

#include "platform/appkit.h"

namespace vantorel::mac {

std::shared_ptr<TextField> makeTextField(Rect frame);

}  // namespace vantorel::mac
