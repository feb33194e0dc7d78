// Vantorel. MIT licence, see LICENSE.
// How values of the seam are written in the fake platform's record.
#pragma once

#include <string>
#include <string_view>

#include "platform/color.h"
#include "platform/geometry.h"
#include "platform/platform_error.h"

namespace vantorel::fake {

/// `text` between quotation marks, line breaks and NULs as escapes, everything else as it is.
std::string quoted(std::string_view text);
/// The shortest decimal form that reads back to the same number.
std::string shown(double number);
std::string shown(bool value);
/// "{{x, y}, {width, height}}"
std::string shown(const Rect& rect);
/// "{width, height}"
std::string shown(const Size& size);
/// "orange", "rgba(0.95, 0.95, 0.95, 1)"
std::string shown(const Color& color);

/// An error as the fake words it: `text` for people, and "FakeError(text)" as its printed form.
PlatformError makeError(const std::string& text);

} // namespace vantorel::fake
