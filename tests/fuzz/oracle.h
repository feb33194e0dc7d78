// Vantorel. MIT licence, see LICENSE.
// What the fuzz targets judge by: a check that ends the program, and slow readers written from the definitions alone.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantorel::fuzz {

inline void check(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "does not hold: %s\n", what);
        std::abort();
    }
}

inline std::string_view textFrom(const std::uint8_t* data, std::size_t size) {
    return size == 0 ? std::string_view() : std::string_view(reinterpret_cast<const char*>(data), size);
}

/// The one way to spell `character` in UTF-8.
inline std::string spelled(char32_t character) {
    const auto byte = [](char32_t value) { return static_cast<char>(static_cast<unsigned char>(value)); };
    if (character < 0x80) {
        return {byte(character)};
    }
    std::string tail;
    char32_t left = character;
    char32_t room = 0x40; // what the first byte of a character of this length can still hold
    char32_t mark = 0xC0;
    do {
        tail.insert(tail.begin(), byte(0x80 | (left & 0x3F)));
        left >>= 6;
        room >>= 1;
        mark |= room;
    } while (left >= room);
    return byte((mark & ~room & 0xFF) | left) + tail;
}

/// The characters of `text`, or nothing when it is not UTF-8: a sequence counts when it is what its value is spelled
/// as.
inline std::optional<std::u32string> characters(std::string_view text) {
    std::u32string result;
    while (!text.empty()) {
        const auto first = static_cast<unsigned char>(text.front());
        std::size_t length = 1;
        char32_t value = first;
        if (first >= 0xC0) {
            length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
            value = first & (0xFFU >> (length + 1));
        }
        if (length > text.size()) {
            return std::nullopt;
        }
        for (std::size_t i = 1; i < length; ++i) {
            value = value << 6 | (static_cast<unsigned char>(text[i]) & 0x3F);
        }
        const bool exists = value <= 0x10FFFF && (value < 0xD800 || value > 0xDFFF);
        if (!exists || spelled(value) != text.substr(0, length)) {
            return std::nullopt;
        }
        result += value;
        text.remove_prefix(length);
    }
    return result;
}

inline std::string spelled(const std::u32string& text) {
    std::string result;
    for (const char32_t character : text) {
        result += spelled(character);
    }
    return result;
}

inline const std::u32string kBlanks = U"\t \u00A0\u1680\u2000\u2001\u2002\u2003\u2004\u2005\u2006\u2007\u2008\u2009"
                                      U"\u200A\u202F\u205F\u3000";
inline const std::u32string kLineBreaks = U"\n\v\f\r\u0085\u2028\u2029";

inline std::u32string trimmed(const std::u32string& text, const std::u32string& blanks) {
    const std::size_t first = text.find_first_not_of(blanks);
    const std::size_t last = text.find_last_not_of(blanks);
    return first == std::u32string::npos ? std::u32string() : text.substr(first, last - first + 1);
}

inline std::vector<std::u32string> lines(const std::u32string& text) {
    std::vector<std::u32string> result(1);
    for (const char32_t character : text) {
        if (kLineBreaks.find(character) != std::u32string::npos) {
            result.emplace_back();
        } else {
            result.back() += character;
        }
    }
    return result;
}

} // namespace vantorel::fuzz
