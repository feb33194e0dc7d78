// Vantorel. MIT licence, see LICENSE.
// Texts of C interfaces.
#pragma once

#include <string>

namespace vantorel::gtk {

/// A copy of `bytes`; empty for null.
inline std::string textOf(const char* bytes) { return bytes != nullptr ? bytes : ""; }

} // namespace vantorel::gtk
