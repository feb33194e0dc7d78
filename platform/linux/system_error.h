// Vantorel. MIT licence, see LICENSE.
// Errors of system calls in the words of the seam.
#pragma once

#include <string>
#include <string_view>

#include "platform/platform_error.h"

namespace vantorel::gtk {

/// The error `code` (an errno value) of what was attempted: `attempt` is the beginning of a sentence, such as "Could
/// not run". `path` is the file in question, in the system's bytes, and may be empty. `note` is put behind the system's
/// words.
PlatformError systemError(std::string_view attempt, const std::string& path, int code, std::string_view note = {});

} // namespace vantorel::gtk
