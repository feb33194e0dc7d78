// Vantorel. MIT licence, see LICENSE.
// The text form in which a rectangle is kept: "{{x, y}, {width, height}}".
#pragma once

#include "platform/geometry.h"

#include <string>
#include <string_view>

namespace vantorel {

/// `rect` as text, each number in the shortest decimal form that reads back to the same value, with an exponent only
/// below 1e-4 and from 1e+17 on. Not affected by the locale. Any thread.
std::string rectText(const Rect& rect);

/// The first four numbers in `text`, taken as x, y, width and height; those that are missing are 0. Never fails: other
/// characters between the numbers do not matter. A number that is no finite 64-bit value ("nan", "inf", 1e999) takes
/// its place as 0. Nothing is checked or clamped. Not affected by the locale. Any thread.
Rect rectFromText(std::string_view text);

} // namespace vantorel
