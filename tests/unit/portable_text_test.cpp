// Vantorel. MIT licence, see LICENSE.
// UTF-8 validation, trimming, line splitting and path joining.
#include "platform/portable/text.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace vantorel {
namespace {

using Pieces = std::vector<std::string_view>;

/// The bytes that spell `code`, also for code points that no text may hold.
std::string spell(std::uint32_t code) {
    const auto byte = [](std::uint32_t value) { return static_cast<char>(static_cast<unsigned char>(value)); };
    if (code < 0x80) {
        return {byte(code)};
    }
    if (code < 0x800) {
        return {byte(0xC0 | code >> 6), byte(0x80 | (code & 0x3F))};
    }
    if (code < 0x10000) {
        return {byte(0xE0 | code >> 12), byte(0x80 | (code >> 6 & 0x3F)), byte(0x80 | (code & 0x3F))};
    }
    return {byte(0xF0 | code >> 18), byte(0x80 | (code >> 12 & 0x3F)), byte(0x80 | (code >> 6 & 0x3F)),
            byte(0x80 | (code & 0x3F))};
}

bool isHorizontal(std::uint32_t code) {
    return code == 0x09 || code == 0x20 || code == 0xA0 || code == 0x1680 || (code >= 0x2000 && code <= 0x200A) ||
           code == 0x202F || code == 0x205F || code == 0x3000;
}

bool isBreak(std::uint32_t code) {
    return (code >= 0x0A && code <= 0x0D) || code == 0x85 || code == 0x2028 || code == 0x2029;
}

TEST(Utf8, TakesEveryCharacterAndNothingElse) {
    for (std::uint32_t code = 0; code <= 0x1FFFFF; ++code) {
        const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
        const bool wanted = code <= 0x10FFFF && !isSurrogate;
        if (isValidUtf8(spell(code)) != wanted) {
            FAIL() << "code point " << code;
        }
    }
}

TEST(Utf8, RefusesOverlongForms) {
    EXPECT_FALSE(isValidUtf8("\xC0\x80"));
    EXPECT_FALSE(isValidUtf8("\xC1\xBF"));
    EXPECT_FALSE(isValidUtf8("\xE0\x80\x80"));
    EXPECT_FALSE(isValidUtf8("\xE0\x9F\xBF"));
    EXPECT_FALSE(isValidUtf8("\xF0\x80\x80\x80"));
    EXPECT_FALSE(isValidUtf8("\xF0\x8F\xBF\xBF"));
}

TEST(Utf8, RefusesHalfCharacters) {
    const std::string robot = "🤖";
    for (std::size_t length = 1; length < robot.size(); ++length) {
        EXPECT_FALSE(isValidUtf8(robot.substr(0, length))) << length;
        EXPECT_FALSE(isValidUtf8(robot.substr(length))) << length;
        EXPECT_FALSE(isValidUtf8(robot.substr(0, length) + "a")) << length;
    }
    EXPECT_FALSE(isValidUtf8("\x80"));
    EXPECT_FALSE(isValidUtf8("\xFE"));
    EXPECT_FALSE(isValidUtf8("\xFF"));
    EXPECT_FALSE(isValidUtf8("\xF8\x88\x80\x80\x80"));
}

TEST(Utf8, FindsTheFaultWhereverItStands) {
    for (std::size_t before = 0; before < 20; ++before) {
        for (std::size_t after = 0; after < 20; ++after) {
            const std::string left(before, 'a');
            const std::string right(after, 'b');
            EXPECT_TRUE(isValidUtf8(left + "é" + right)) << before << " and " << after;
            EXPECT_FALSE(isValidUtf8(left + "\xE9" + right)) << before << " and " << after;
        }
    }
}

TEST(Utf8, TakesNulAndTheEmptyText) {
    EXPECT_TRUE(isValidUtf8(""));
    EXPECT_TRUE(isValidUtf8(std::string_view("a\0b", 3)));
}

TEST(Trim, KnowsExactlyTheHorizontalBlanks) {
    for (std::uint32_t code = 0; code <= 0x10FFFF; ++code) {
        if (code >= 0xD800 && code <= 0xDFFF) {
            continue;
        }
        const std::string character = spell(code);
        const std::string text = character + "x" + character;
        const std::string_view wanted = isHorizontal(code) ? std::string_view("x") : std::string_view(text);
        if (trimWhitespace(text) != wanted) {
            FAIL() << "code point " << code;
        }
    }
}

TEST(Trim, WithNewlinesKnowsTheLineBreaksToo) {
    for (std::uint32_t code = 0; code <= 0x10FFFF; ++code) {
        if (code >= 0xD800 && code <= 0xDFFF) {
            continue;
        }
        const std::string character = spell(code);
        const std::string text = character + "x" + character;
        const bool blank = isHorizontal(code) || isBreak(code);
        if (trimWhitespaceAndNewlines(text) != (blank ? std::string_view("x") : std::string_view(text))) {
            FAIL() << "code point " << code;
        }
    }
}

TEST(Trim, TakesMixedBlanksAwayAtBothEndsOnly) {
    EXPECT_EQ(trimWhitespace(" \t\u00A0\u3000a \u2003 b\u1680\u205F "), "a \u2003 b");
    EXPECT_EQ(trimWhitespace("\na\n"), "\na\n");
    EXPECT_EQ(trimWhitespaceAndNewlines("\r\n\u2028 one\ntwo \u0085\n\n"), "one\ntwo");
}

TEST(Trim, LeavesNothingOfABlankText) {
    EXPECT_EQ(trimWhitespace(""), "");
    EXPECT_EQ(trimWhitespace(" \u2009\t"), "");
    EXPECT_EQ(trimWhitespaceAndNewlines(" \n\u2029\r\n"), "");
}

TEST(Trim, KeepsStrayBytes) {
    EXPECT_EQ(trimWhitespace("\x80 a \xA0"), "\x80 a \xA0");
    EXPECT_EQ(trimWhitespaceAndNewlines("\xE2\x80"), "\xE2\x80");
    EXPECT_EQ(trimWhitespaceAndNewlines(" \xC2"), "\xC2");
}

TEST(Trim, ReturnsAViewIntoItsArgument) {
    const std::string text = "  here  ";
    EXPECT_EQ(trimWhitespace(text).data(), text.data() + 2);
}

TEST(SplitLines, BreaksAtEachOfTheSeven) {
    EXPECT_EQ(splitLines("a\nb\vc\fd\re\u0085f\u2028g\u2029h"), (Pieces{"a", "b", "c", "d", "e", "f", "g", "h"}));
}

TEST(SplitLines, BreaksNowhereElse) {
    for (std::uint32_t code = 0; code <= 0x10FFFF; ++code) {
        if (code >= 0xD800 && code <= 0xDFFF) {
            continue;
        }
        const std::string text = "a" + spell(code) + "b";
        if (splitLines(text).size() != (isBreak(code) ? 2U : 1U)) {
            FAIL() << "code point " << code;
        }
    }
}

TEST(SplitLines, LeavesAnEmptyPieceBetweenCrAndLf) { EXPECT_EQ(splitLines("a\r\nb"), (Pieces{"a", "", "b"})); }

TEST(SplitLines, GivesOnePieceMoreThanBreaks) {
    EXPECT_EQ(splitLines(""), (Pieces{""}));
    EXPECT_EQ(splitLines("\n"), (Pieces{"", ""}));
    EXPECT_EQ(splitLines("a\n"), (Pieces{"a", ""}));
    EXPECT_EQ(splitLines("\na"), (Pieces{"", "a"}));
}

TEST(SplitLines, KeepsHalfBreaksAtTheEnd) {
    EXPECT_EQ(splitLines("a\xC2"), (Pieces{"a\xC2"}));
    EXPECT_EQ(splitLines("a\xE2\x80"), (Pieces{"a\xE2\x80"}));
}

TEST(SplitLines, GoesThroughAMegabyte) {
    std::string text;
    while (text.size() < 1'000'000) {
        text += "  A_RATHER_ORDINARY_NAME = its value, with é and 🤖 \r\n";
    }
    std::size_t kept = 0;
    ASSERT_TRUE(isValidUtf8(text));
    for (const std::string_view line : splitLines(text)) {
        kept += trimWhitespace(line).empty() ? 0U : 1U;
    }
    EXPECT_EQ(kept,
              text.size() / std::string_view("  A_RATHER_ORDINARY_NAME = its value, with é and 🤖 \r\n").size());
}

TEST(AppendPathComponent, PutsExactlyOneSlashBetween) {
    EXPECT_EQ(appendPathComponent("/app", "vantor-srv"), "/app/vantor-srv");
    EXPECT_EQ(appendPathComponent("/app/", "vantor-srv"), "/app/vantor-srv");
    EXPECT_EQ(appendPathComponent("/app//", "/vantor-srv"), "/app/vantor-srv");
    EXPECT_EQ(appendPathComponent("/app", "Contents/Resources"), "/app/Contents/Resources");
    EXPECT_EQ(appendPathComponent("app", ".env"), "app/.env");
}

TEST(AppendPathComponent, LeavesNoSlashAtTheEnd) {
    EXPECT_EQ(appendPathComponent("/app", "Resources/"), "/app/Resources");
    EXPECT_EQ(appendPathComponent("/app/", ""), "/app");
    EXPECT_EQ(appendPathComponent("/app/", "/"), "/app");
}

TEST(AppendPathComponent, KnowsTheRoot) {
    EXPECT_EQ(appendPathComponent("/", "vantor-srv"), "/vantor-srv");
    EXPECT_EQ(appendPathComponent("/", ""), "/");
    EXPECT_EQ(appendPathComponent("", "/"), "/");
    EXPECT_EQ(appendPathComponent("", "/vantor-srv"), "/vantor-srv");
}

TEST(AppendPathComponent, AddsNoSlashToAnEmptyPart) {
    EXPECT_EQ(appendPathComponent("", "vantor-srv"), "vantor-srv");
    EXPECT_EQ(appendPathComponent("app", ""), "app");
    EXPECT_EQ(appendPathComponent("", ""), "");
}

TEST(AppendPathComponent, ResolvesNothing) { EXPECT_EQ(appendPathComponent("/a/../b", "./c d"), "/a/../b/./c d"); }

} // namespace
} // namespace vantorel
