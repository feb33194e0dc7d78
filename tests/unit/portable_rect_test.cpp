// Vantorel. MIT licence, see LICENSE.
// The rectangle's text form: what is written, and what is read from good and damaged texts.
#include "platform/portable/rect_text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <locale>
#include <random>
#include <string>

namespace vantorel {
namespace {

Rect rect(double x, double y, double width, double height) { return Rect{Point{x, y}, Size{width, height}}; }

std::string written(double number) {
    const std::string text = rectText(rect(number, 0, 0, 0));
    return text.substr(2, text.find(',') - 2);
}

double readBack(std::string_view number) { return rectFromText("{{" + std::string(number) + ", 0}, {0, 0}}").origin.x; }

/// Decimal commas everywhere, as on many desktops, for as long as it lives.
class CommaLocale {
public:
    CommaLocale() : saved_(std::locale::global(std::locale(std::locale::classic(), new Comma))) {}
    ~CommaLocale() { std::locale::global(saved_); }
    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;

private:
    class Comma : public std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    std::locale saved_;
};

TEST(RectText, HasThePublishedForm) {
    EXPECT_EQ(rectText(rect(100, 80, 900, 778)), "{{100, 80}, {900, 778}}");
    EXPECT_EQ(rectText(Rect{}), "{{0, 0}, {0, 0}}");
    EXPECT_EQ(rectText(rect(-1.5, 0.25, 1440, 900)), "{{-1.5, 0.25}, {1440, 900}}");
}

TEST(RectText, WritesTheFewestDigits) {
    EXPECT_EQ(written(0.5), "0.5");
    EXPECT_EQ(written(0.1), "0.1");
    EXPECT_EQ(written(1.0 / 3), "0.3333333333333333");
    EXPECT_EQ(written(0.1 + 0.2), "0.30000000000000004");
    EXPECT_EQ(written(1234567), "1234567");
    EXPECT_EQ(written(-900.125), "-900.125");
    EXPECT_EQ(written(123456789.5), "123456789.5");
}

TEST(RectText, UsesAnExponentOnlyForVeryLargeAndVerySmallNumbers) {
    EXPECT_EQ(written(1e5), "100000");
    EXPECT_EQ(written(1e16), "10000000000000000");
    EXPECT_EQ(written(1e17), "1e+17");
    EXPECT_EQ(written(1e20), "1e+20");
    EXPECT_EQ(written(-1.25e300), "-1.25e+300");
    EXPECT_EQ(written(0.0001), "0.0001");
    EXPECT_EQ(written(0.00012), "0.00012");
    EXPECT_EQ(written(0.00001), "1e-05");
    EXPECT_EQ(written(-0.0), "-0");
}

TEST(RectText, ReadsBackToTheSameNumber) {
    std::mt19937_64 random(20240229);
    for (int i = 0; i < 2000; ++i) {
        const std::uint64_t bits = random();
        double value = 0;
        static_assert(sizeof value == sizeof bits);
        std::memcpy(&value, &bits, sizeof value);
        if (!std::isnormal(value)) {
            continue;
        }
        ASSERT_EQ(readBack(written(value)), value) << written(value);
    }
    EXPECT_EQ(readBack(written(std::numeric_limits<double>::max())), std::numeric_limits<double>::max());
    EXPECT_EQ(readBack(written(std::numeric_limits<double>::min())), std::numeric_limits<double>::min());
}

TEST(RectText, DoesNotFollowTheLocale) {
    const CommaLocale commas;
    EXPECT_EQ(rectText(rect(1234.5, 0, 90000, 1)), "{{1234.5, 0}, {90000, 1}}");
    EXPECT_EQ(rectFromText("{{1234.5, 2}, {90000, 778.25}}"), rect(1234.5, 2, 90000, 778.25));
}

TEST(RectFromText, ReadsThePublishedForm) {
    EXPECT_EQ(rectFromText("{{100, 80}, {900, 778}}"), rect(100, 80, 900, 778));
    EXPECT_EQ(rectFromText("{{-10.5, +3}, {1e3, .5}}"), rect(-10.5, 3, 1000, 0.5));
    EXPECT_EQ(rectFromText("{{100,80},{900,778}}"), rect(100, 80, 900, 778));
    EXPECT_EQ(rectFromText("  { {1 , 2 } ,\t{ 3, 4. } }\n"), rect(1, 2, 3, 4));
}

TEST(RectFromText, CountsMissingNumbersAsZero) {
    EXPECT_EQ(rectFromText(""), Rect{});
    EXPECT_EQ(rectFromText("hello"), Rect{});
    EXPECT_EQ(rectFromText("{{1, 2}, {900"), rect(1, 2, 900, 0));
    EXPECT_EQ(rectFromText("{{1"), rect(1, 0, 0, 0));
    EXPECT_EQ(rectFromText("{{}, {}}"), Rect{});
    EXPECT_EQ(rectFromText("{{1, 2}}"), rect(1, 2, 0, 0));
}

TEST(RectFromText, CountsNumbersWithoutAFiniteValueAsZeroInTheirPlace) {
    EXPECT_EQ(rectFromText("{{nan, 2}, {NaN, 4}}"), rect(0, 2, 0, 4));
    EXPECT_EQ(rectFromText("{{inf, -inf}, {INFINITY, 4}}"), rect(0, 0, 0, 4));
    EXPECT_EQ(rectFromText("{{1e999, -1e999}, {3, 4}}"), rect(0, 0, 3, 4));
    EXPECT_EQ(rectFromText("{{1, 2}, {" + std::string(400, '9') + ", 4}}"), rect(1, 2, 0, 4));
    EXPECT_EQ(rectFromText("{{1e99999999999999999999, 2}, {3, 4}}"), rect(0, 2, 3, 4));
}

TEST(RectFromText, WritesWhatIsNotFiniteInAFormThatReadsAsZero) {
    const double infinity = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(rectFromText(rectText(rect(nan, infinity, -infinity, 4))), rect(0, 0, 0, 4));
}

TEST(RectFromText, PassesOverWordsAndMarks) {
    EXPECT_EQ(rectFromText("x=1 y=2 width=3 height=4"), rect(1, 2, 3, 4));
    EXPECT_EQ(rectFromText("1 2 3 4"), rect(1, 2, 3, 4));
    EXPECT_EQ(rectFromText("--5, - 6, 7-8"), rect(-5, 6, 7, -8));
    EXPECT_EQ(rectFromText("1e, 2e+, 3.e5, ."), rect(1, 2, 3e5, 0));
    EXPECT_EQ(rectFromText("🤖1"), rect(1, 0, 0, 0));
    EXPECT_EQ(rectFromText("0x10 5"), rect(0, 5, 0, 0));
    EXPECT_EQ(rectFromText(std::string_view("1\0002", 3)), rect(1, 2, 0, 0));
}

TEST(RectFromText, StopsAtTheFourthNumber) { EXPECT_EQ(rectFromText("1 2 3 4 5"), rect(1, 2, 3, 4)); }

TEST(RectFromText, TakesHugeTexts) {
    EXPECT_EQ(rectFromText(std::string(2'000'000, '{') + "7"), rect(7, 0, 0, 0));
    EXPECT_EQ(rectFromText(std::string(2'000'000, 'a') + " 7"), rect(7, 0, 0, 0));
    EXPECT_EQ(rectFromText("0." + std::string(1'000'000, '0') + "1"), Rect{});
    EXPECT_EQ(rectFromText(std::string(1'000'000, '0') + "12"), rect(12, 0, 0, 0));
}

} // namespace
} // namespace vantorel
