// Vantorel. MIT licence, see LICENSE.
// The rectangle's text: any text read, any numbers written.
#include "platform/portable/rect_text.h"

#include "tests/fuzz/oracle.h"

#include <array>
#include <cmath>
#include <cstring>

using namespace vantorel;

namespace {

std::array<double, 4> numbersOf(const Rect& rect) {
    return {rect.origin.x, rect.origin.y, rect.size.width, rect.size.height};
}

/// A number is kept unless it is too close to zero for all its digits, or not finite at all.
void checkKept(double before, double after) {
    const bool isPlain = std::isnormal(before) || before == 0;
    fuzz::check(!isPlain || after == before, "a number written out is read back");
    fuzz::check(std::isfinite(before) || after == 0, "what is not finite is read as 0");
}

void checkRoundTrip(const Rect& rect) {
    const std::string text = rectText(rect);
    fuzz::check(text.size() < 128, "the text is short");
    const std::array<double, 4> before = numbersOf(rect);
    const std::array<double, 4> after = numbersOf(rectFromText(text));
    for (std::size_t i = 0; i < before.size(); ++i) {
        checkKept(before[i], after[i]);
    }
    fuzz::check(rectFromText(text.substr(1)) == rectFromText(text), "outer marks do not matter");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Rect read = rectFromText(fuzz::textFrom(data, size));
    for (const double number : numbersOf(read)) {
        fuzz::check(std::isfinite(number), "only finite numbers are read");
    }
    checkRoundTrip(read);

    std::array<double, 4> bits{};
    if (size >= sizeof bits) {
        std::memcpy(bits.data(), data, sizeof bits);
        checkRoundTrip(Rect{Point{bits[0], bits[1]}, Size{bits[2], bits[3]}});
    }
    return 0;
}
