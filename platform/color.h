// Vantorel. MIT licence, see LICENSE.
// Colours as values: they cross threads with the status text, so they are no handles.
#pragma once

#include <variant>

namespace vantorel {

/// A colour of the platform's own palette; the platform decides the shade (light and dark scheme included).
enum class SystemColor {
    clear,
    orange,
    red,
    systemGreen,
};

/// A fixed colour in the calibrated RGB space; every component runs from 0 to 1.
struct CalibratedRgb {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;

    friend bool operator==(const CalibratedRgb&, const CalibratedRgb&) = default;
};

using Color = std::variant<SystemColor, CalibratedRgb>;

} // namespace vantorel
