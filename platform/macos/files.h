// Vantorel. MIT licence, see LICENSE.
// Files over NSFileManager.
#pragma once

#include <memory>

#include "platform/foundation.h"

namespace vantorel::mac {

std::unique_ptr<FileManager> makeFileManager();

}  // namespace vantorel::mac
