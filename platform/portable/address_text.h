// Vantorel. MIT licence, see LICENSE.
// Whether a text can be taken as the address of a page or a probe.
#pragma once

#include <string_view>

namespace vantorel {

/// True when `address` is "http://" or "https://" (in any case), a host, and optionally ":" with a decimal integer and
/// a part that begins with "/", "?" or "#", all in printable ASCII without blanks. The port may be negative or beyond
/// 65535: no such address ever answers, but that is for the load to find out. Any thread.
bool isLoadableAddress(std::string_view address);

} // namespace vantorel
