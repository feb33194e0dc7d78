// Vantorel. MIT licence, see LICENSE.
// The text form in which a rectangle is kept: "{{x, y}, {width, height}}".
#include "platform/portable/rect_text.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <ios>
#include <limits>
#include <locale>
#include <optional>
#include <sstream>

namespace vantorel {
namespace {

// Numbers go through streams under the classic locale: std::to_chars and std::from_chars for double need macOS 13.3,
// and the C functions follow the desktop's decimal comma.

constexpr int kMostDigits = std::numeric_limits<double>::max_digits10;
constexpr int kLeastFixedExponent = -4;

/// The value of `digits[.digits][e[sign]digits]`; 0 when no double can hold it.
double valueOf(const std::string& number) {
    std::istringstream stream(number);
    stream.imbue(std::locale::classic());
    double value = 0;
    stream >> value;
    return stream.fail() || !std::isfinite(value) ? 0 : value;
}

std::string scientificText(double value, int digits) {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream.precision(digits - 1);
    stream << std::scientific << value;
    return stream.str();
}

/// A positive finite number in the fewest digits that read back to it.
std::string magnitudeText(double value) {
    std::string scientific = scientificText(value, kMostDigits);
    for (int digits = 1; digits < kMostDigits; ++digits) {
        std::string shorter = scientificText(value, digits);
        if (valueOf(shorter) == value) {
            scientific = std::move(shorter);
            break;
        }
    }
    const std::size_t mark = scientific.find('e');
    const int exponent = std::stoi(scientific.substr(mark + 1));
    if (exponent < kLeastFixedExponent || exponent >= kMostDigits) {
        return scientific;
    }
    std::string digits = scientific.substr(0, 1);
    if (mark > 2) {
        digits += scientific.substr(2, mark - 2);
    }
    if (exponent < 0) {
        return "0." + std::string(static_cast<std::size_t>(-exponent - 1), '0') + digits;
    }
    const std::size_t whole = static_cast<std::size_t>(exponent) + 1;
    if (digits.size() <= whole) {
        return digits + std::string(whole - digits.size(), '0');
    }
    return digits.substr(0, whole) + '.' + digits.substr(whole);
}

std::string numberText(double value) {
    if (std::isnan(value)) {
        return "nan";
    }
    const std::string sign = std::signbit(value) ? "-" : "";
    const double magnitude = std::fabs(value);
    if (std::isinf(magnitude)) {
        return sign + "inf";
    }
    return magnitude == 0 ? sign + "0" : sign + magnitudeText(magnitude);
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

std::string lowered(std::string_view word) {
    std::string result(word);
    for (char& c : result) {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return result;
}

/// Walks over a text from number to number.
class NumberScanner {
public:
    explicit NumberScanner(std::string_view text) : rest_(text) {}

    /// The next number, or nothing when there is none left.
    std::optional<double> next() {
        while (!rest_.empty()) {
            if (const std::size_t length = numberLength(); length > 0) {
                const double value = valueOf(std::string(rest_.substr(0, length)));
                rest_.remove_prefix(length);
                const bool negative = negative_;
                negative_ = false;
                return negative ? -value : value;
            }
            if (isLetter(rest_.front())) {
                if (const std::string word = takeWord(); word == "nan" || word == "inf" || word == "infinity") {
                    negative_ = false;
                    return 0;
                }
                continue;
            }
            negative_ = rest_.front() == '-';
            rest_.remove_prefix(1);
        }
        return std::nullopt;
    }

private:
    char at(std::size_t index) const { return index < rest_.size() ? rest_[index] : '\0'; }

    std::size_t digitsFrom(std::size_t index) const {
        while (isDigit(at(index))) {
            ++index;
        }
        return index;
    }

    /// The length of the unsigned number at the front, 0 when there is none.
    std::size_t numberLength() const {
        std::size_t end = digitsFrom(0);
        if (at(end) == '.') {
            const std::size_t fractionEnd = digitsFrom(end + 1);
            if (fractionEnd == end + 1 && end == 0) {
                return 0; // a lone point
            }
            end = fractionEnd;
        }
        if (end > 0 && (at(end) == 'e' || at(end) == 'E')) {
            const std::size_t signEnd = end + (at(end + 1) == '+' || at(end + 1) == '-' ? 2 : 1);
            end = isDigit(at(signEnd)) ? digitsFrom(signEnd) : end;
        }
        return end;
    }

    std::string takeWord() {
        negative_ = false;
        std::size_t end = 0;
        while (isLetter(at(end)) || isDigit(at(end))) {
            ++end;
        }
        const std::string word = lowered(rest_.substr(0, end));
        rest_.remove_prefix(end);
        return word;
    }

    std::string_view rest_;
    bool negative_ = false;
};

} // namespace

std::string rectText(const Rect& rect) {
    return "{{" + numberText(rect.origin.x) + ", " + numberText(rect.origin.y) + "}, {" + numberText(rect.size.width) +
           ", " + numberText(rect.size.height) + "}}";
}

Rect rectFromText(std::string_view text) {
    NumberScanner scanner(text);
    std::array<double, 4> numbers{};
    for (double& number : numbers) {
        const std::optional<double> next = scanner.next();
        if (!next) {
            break;
        }
        number = *next;
    }
    return Rect{Point{numbers[0], numbers[1]}, Size{numbers[2], numbers[3]}};
}

} // namespace vantorel
