// Vantorel. MIT licence, see LICENSE.
// Text in UTF-8: strict validation, trimming, splitting into lines, joining paths.
#include "platform/portable/text.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace vantorel {
namespace {

enum class BlankSet { horizontal, withLineBreaks };

unsigned char byteAt(std::string_view text, std::size_t index) { return static_cast<unsigned char>(text[index]); }

// The shortest way to know each character of the two sets is by its bytes: no member is longer than three.

bool isHorizontalBlank(std::string_view bytes) {
    switch (bytes.size()) {
    case 1:
        return bytes == " " || bytes == "\t";
    case 2:
        return bytes == "\xC2\xA0"; // U+00A0 NO-BREAK SPACE
    case 3:
        if (bytes.substr(0, 2) == "\xE2\x80") { // U+2000 to U+200A, U+202F
            const unsigned char last = byteAt(bytes, 2);
            return (last >= 0x80 && last <= 0x8A) || last == 0xAF;
        }
        return bytes == "\xE1\x9A\x80"     // U+1680 OGHAM SPACE MARK
               || bytes == "\xE2\x81\x9F"  // U+205F MEDIUM MATHEMATICAL SPACE
               || bytes == "\xE3\x80\x80"; // U+3000 IDEOGRAPHIC SPACE
    default:
        return false;
    }
}

bool isLineBreak(std::string_view bytes) {
    switch (bytes.size()) {
    case 1:
        return bytes[0] >= '\n' && bytes[0] <= '\r'; // LF, VT, FF, CR
    case 2:
        return bytes == "\xC2\x85"; // U+0085 NEXT LINE
    case 3:
        return bytes == "\xE2\x80\xA8" || bytes == "\xE2\x80\xA9"; // U+2028, U+2029
    default:
        return false;
    }
}

bool isBlank(std::string_view bytes, BlankSet set) {
    return isHorizontalBlank(bytes) || (set == BlankSet::withLineBreaks && isLineBreak(bytes));
}

/// Most texts begin and end with one of these, which settles the matter at once.
bool isVisibleAscii(char byte) { return byte > ' ' && byte < '\x7F'; }

/// The length in bytes of the blank at the front (or back) of `text`, 0 when there is none.
std::size_t leadingBlank(std::string_view text, BlankSet set) {
    if (!text.empty() && isVisibleAscii(text.front())) {
        return 0;
    }
    for (std::size_t length = 1; length <= 3 && length <= text.size(); ++length) {
        if (isBlank(text.substr(0, length), set)) {
            return length;
        }
    }
    return 0;
}

std::size_t trailingBlank(std::string_view text, BlankSet set) {
    if (!text.empty() && isVisibleAscii(text.back())) {
        return 0;
    }
    for (std::size_t length = 1; length <= 3 && length <= text.size(); ++length) {
        if (isBlank(text.substr(text.size() - length), set)) {
            return length;
        }
    }
    return 0;
}

std::string_view trim(std::string_view text, BlankSet set) {
    while (const std::size_t length = leadingBlank(text, set)) {
        text.remove_prefix(length);
    }
    while (const std::size_t length = trailingBlank(text, set)) {
        text.remove_suffix(length);
    }
    return text;
}

/// The length of the well-formed character at `index`, whose first byte is not ASCII; 0 when it is malformed.
std::size_t longCharacterAt(std::string_view text, std::size_t index) {
    const unsigned char lead = byteAt(text, index);
    std::size_t length = 0;
    // The second byte's range shuts out overlong forms, surrogates and everything above U+10FFFF.
    unsigned char low = 0x80;
    unsigned char high = 0xBF;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        low = lead == 0xE0 ? 0xA0 : low;
        high = lead == 0xED ? 0x9F : high;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        low = lead == 0xF0 ? 0x90 : low;
        high = lead == 0xF4 ? 0x8F : high;
    }
    if (length == 0 || text.size() - index < length) {
        return 0;
    }
    if (byteAt(text, index + 1) < low || byteAt(text, index + 1) > high) {
        return 0;
    }
    for (std::size_t i = 2; i < length; ++i) {
        if ((byteAt(text, index + i) & 0xC0) != 0x80) {
            return 0;
        }
    }
    return length;
}

} // namespace

bool isValidUtf8(std::string_view text) {
    std::size_t index = 0;
    while (index < text.size()) {
        // Server output is nearly all ASCII: eight bytes at a time are looked at while none has its high bit set.
        while (text.size() - index >= sizeof(std::uint64_t)) {
            std::uint64_t block = 0;
            std::memcpy(&block, text.data() + index, sizeof block);
            if ((block & 0x8080808080808080U) != 0) {
                break;
            }
            index += sizeof block;
        }
        if (index == text.size()) {
            break;
        }
        if (byteAt(text, index) < 0x80) {
            ++index;
            continue;
        }
        const std::size_t length = longCharacterAt(text, index);
        if (length == 0) {
            return false;
        }
        index += length;
    }
    return true;
}

std::string_view trimWhitespace(std::string_view text) { return trim(text, BlankSet::horizontal); }

std::string_view trimWhitespaceAndNewlines(std::string_view text) { return trim(text, BlankSet::withLineBreaks); }

std::vector<std::string_view> splitLines(std::string_view text) {
    std::vector<std::string_view> lines;
    std::size_t start = 0;
    std::size_t index = 0;
    while (index < text.size()) {
        // Only these first bytes can begin a line break.
        const unsigned char first = byteAt(text, index);
        std::size_t length = 0;
        if (first >= '\n' && first <= '\r') {
            length = 1;
        } else if (first == 0xC2 && isLineBreak(text.substr(index, 2))) {
            length = 2;
        } else if (first == 0xE2 && isLineBreak(text.substr(index, 3))) {
            length = 3;
        }
        if (length == 0) {
            ++index;
            continue;
        }
        lines.push_back(text.substr(start, index - start));
        index += length;
        start = index;
    }
    lines.push_back(text.substr(start));
    return lines;
}

std::string appendPathComponent(std::string_view base, std::string_view component) {
    const bool fromRoot = !base.empty() ? base.front() == '/' : !component.empty() && component.front() == '/';
    while (!base.empty() && base.back() == '/') {
        base.remove_suffix(1);
    }
    while (!component.empty() && component.front() == '/') {
        component.remove_prefix(1);
    }
    while (!component.empty() && component.back() == '/') {
        component.remove_suffix(1);
    }
    std::string path(base);
    if (fromRoot ? (path.empty() || !component.empty()) : (!path.empty() && !component.empty())) {
        path += '/';
    }
    path += component;
    return path;
}

} // namespace vantorel
