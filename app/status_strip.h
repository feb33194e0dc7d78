// Vantorel. MIT licence, see LICENSE.
// The one measure that the strip and the page below it share.
#pragma once

namespace vantorel {

/// Height of the status strip in points; the page gets the rest of the content.
inline constexpr double kStatusStripHeight = 30;

} // namespace vantorel
