// Vantorel. MIT licence, see LICENSE.
// Files: existence, permission bits, reading text.
#pragma once

#include <memory>

#include "platform/foundation.h"

namespace vantorel::gtk {

std::unique_ptr<FileManager> makeFileManager();

} // namespace vantorel::gtk
