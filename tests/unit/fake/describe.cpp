// Vantorel. MIT licence, see LICENSE.
// How values of the seam are written in the fake platform's record.
#include "tests/unit/fake/describe.h"

#include <array>
#include <charconv>

namespace vantorel::fake {

std::string quoted(std::string_view text) {
    std::string result = "\"";
    for (const char character : text) {
        switch (character) {
        case '\n':
            result += "\\n";
            break;
        case '\r':
            result += "\\r";
            break;
        case '\0':
            result += "\\0";
            break;
        default:
            result += character;
        }
    }
    return result + '"';
}

std::string shown(double number) {
    std::array<char, 64> buffer{};
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number).ptr;
    return {buffer.data(), end};
}

std::string shown(bool value) { return value ? "true" : "false"; }

std::string shown(const Rect& rect) {
    return "{{" + shown(rect.origin.x) + ", " + shown(rect.origin.y) + "}, " + shown(rect.size) + "}";
}

std::string shown(const Size& size) { return "{" + shown(size.width) + ", " + shown(size.height) + "}"; }

namespace {

std::string shownSystemColor(SystemColor color) {
    switch (color) {
    case SystemColor::clear:
        return "clear";
    case SystemColor::orange:
        return "orange";
    case SystemColor::red:
        return "red";
    case SystemColor::systemGreen:
        return "systemGreen";
    }
    return "unknown";
}

} // namespace

std::string shown(const Color& color) {
    if (const auto* system = std::get_if<SystemColor>(&color))
        return shownSystemColor(*system);
    const auto& rgb = std::get<CalibratedRgb>(color);
    return "rgba(" + shown(rgb.red) + ", " + shown(rgb.green) + ", " + shown(rgb.blue) + ", " + shown(rgb.alpha) + ")";
}

PlatformError makeError(const std::string& text) {
    return {.localizedDescription = text, .description = "FakeError(" + text + ")"};
}

} // namespace vantorel::fake
