// Vantorel. MIT licence, see LICENSE.
// Points, sizes and rectangles of the seam: plain values in points.
#pragma once

namespace vantorel {

/// A position in points, origin at the bottom left, y growing upwards.
struct Point {
    double x = 0;
    double y = 0;
    friend bool operator==(const Point&, const Point&) = default;
};

/// An extent in points.
struct Size {
    double width = 0;
    double height = 0;
    friend bool operator==(const Size&, const Size&) = default;
};

/// A rectangle in points; `origin` is its bottom left corner.
struct Rect {
    Point origin;
    Size size;
    friend bool operator==(const Rect&, const Rect&) = default;
};

} // namespace vantorel
