// Vantorel. MIT licence, see LICENSE.
// The text of the About panel.
#pragma once

#include <cstdint>
#include <string>

namespace vantorel {

/// Thirteen lines; the last one names the server's port. No line feed at the end.
std::string aboutText(std::int64_t port);

} // namespace vantorel
