// Vantorel. MIT licence, see LICENSE.
// The table of key positions and the modifier word.
#include "platform/portable/virtual_keys.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace vantorel {
namespace {

using Keys = std::vector<std::uint16_t>;
using Row = std::pair<unsigned, std::vector<int>>; // the first evdev code of a run, and the virtual keys of the run

void expectRun(const Row& row) {
    unsigned evdevCode = row.first;
    for (const int wanted : row.second) {
        EXPECT_EQ(virtualKeyCode(evdevCode), std::optional<std::uint16_t>(static_cast<std::uint16_t>(wanted)))
            << "evdev code " << evdevCode;
        ++evdevCode;
    }
}

TEST(VirtualKeys, HoldTheThirteenHotkeys) {
    // Space S B Q M D F R U Z W H I, at their places on a US keyboard
    const std::map<unsigned, int> hotkeys = {{57, 49}, {31, 1},  {48, 11}, {16, 12}, {50, 46}, {32, 2}, {33, 3},
                                             {19, 15}, {22, 32}, {44, 6},  {17, 13}, {35, 4},  {23, 34}};
    ASSERT_EQ(hotkeys.size(), 13U);
    for (const auto& [evdevCode, wanted] : hotkeys) {
        EXPECT_EQ(virtualKeyCode(evdevCode), static_cast<std::uint16_t>(wanted)) << evdevCode;
    }
}

TEST(VirtualKeys, FollowTheRowsOfTheKeyboard) {
    expectRun({1, {53, 18, 19, 20, 21, 23, 22, 26, 28, 25, 29, 27, 24, 51}});  // Escape 1234567890 - = Backspace
    expectRun({15, {48, 12, 13, 14, 15, 17, 16, 32, 34, 31, 35, 33, 30, 36}}); // Tab qwertyuiop [ ] Return
    expectRun({29, {59, 0, 1, 2, 3, 5, 4, 38, 40, 37, 41, 39, 50}});           // Control asdfghjkl ; ' `
    expectRun({42, {56, 42, 6, 7, 8, 9, 11, 45, 46, 43, 47, 44, 60}});         // Shift \ zxcvbnm , . / Shift
    expectRun({55, {67, 58, 49, 57}});                                         // pad *, Alt, Space, Caps Lock
}

TEST(VirtualKeys, KnowFunctionKeys) {
    expectRun({59, {122, 120, 99, 118, 96, 97, 98, 100, 101, 109}}); // F1 to F10
    expectRun({87, {103, 111}});                                     // F11, F12
    expectRun({183, {105, 107, 113, 106, 64, 79, 80, 90}});          // F13 to F20
}

TEST(VirtualKeys, KnowTheNumberPad) {
    expectRun({69, {71, 107, 89, 91, 92, 78, 86, 87, 88, 69, 83, 84, 85, 82, 65}}); // Num Lock to the point
    expectRun({96, {76, 62, 75}});                                                  // Enter, right Control, /
    expectRun({117, {81}});                                                         // =
    expectRun({121, {95}});                                                         // comma
}

TEST(VirtualKeys, KnowNavigationAndModifiers) {
    expectRun(
        {102, {115, 126, 116, 123, 124, 119, 125, 121, 114, 117}}); // Home Up PgUp Left Right End Down PgDn Ins Del
    expectRun({99, {105, 61}});                                     // Print Screen, right Alt
    expectRun({125, {55, 54, 110}});                                // left and right Super, Menu
}

TEST(VirtualKeys, KnowIsoAndJapaneseKeys) {
    EXPECT_EQ(virtualKeyCode(86), 10);   // between left Shift and Z
    EXPECT_EQ(virtualKeyCode(124), 93);  // Yen
    EXPECT_EQ(virtualKeyCode(89), 94);   // Ro
    EXPECT_EQ(virtualKeyCode(95), 95);   // number pad comma
    EXPECT_EQ(virtualKeyCode(123), 102); // Eisu
    EXPECT_EQ(virtualKeyCode(122), 104); // Kana
    EXPECT_EQ(virtualKeyCode(94), 102);  // Muhenkan
    EXPECT_EQ(virtualKeyCode(92), 104);  // Henkan
}

TEST(VirtualKeys, AreEmptyForOtherPositions) {
    for (const unsigned evdevCode : {0U, 84U, 85U, 101U, 112U, 116U, 128U, 191U, 240U, 255U, 465U, 100'000U, ~0U}) {
        EXPECT_EQ(virtualKeyCode(evdevCode), std::nullopt) << evdevCode;
    }
}

TEST(VirtualKeys, ReachEachPrintingPositionOnce) {
    // Letters, digits, punctuation and the number pad: no two positions may be taken for one another.
    std::map<std::uint16_t, std::vector<unsigned>> positions;
    for (unsigned evdevCode = 0; evdevCode < 768; ++evdevCode) {
        if (const auto key = virtualKeyCode(evdevCode)) {
            positions[*key].push_back(evdevCode);
        }
    }
    const std::set<std::uint16_t> standIns = {95, 102, 104, 105, 107, 113, 114};
    for (const auto& [key, codes] : positions) {
        EXPECT_TRUE(codes.size() == 1 || standIns.contains(key)) << "virtual key " << key;
    }
    // All documented codes below 127 but for 52, 66, 68, 70, 77, 108 and 112, which no keyboard has.
    for (std::uint16_t key = 0; key < 127; ++key) {
        const std::set<std::uint16_t> unused = {52, 66, 68, 70, 77, 108, 112};
        EXPECT_EQ(positions.contains(key), !unused.contains(key)) << "virtual key " << key;
    }
    EXPECT_FALSE(positions.contains(kUnknownVirtualKeyCode));
}

TEST(ModifierKeys, AreTheTenThatOnlyChangeModifiers) {
    for (std::uint16_t key = 0; key < 256; ++key) {
        EXPECT_EQ(isModifierKey(key), key >= 54 && key <= 63) << key;
    }
    EXPECT_FALSE(isModifierKey(kUnknownVirtualKeyCode));
}

TEST(ModifierFlags, GiveEachModifierItsBit) {
    constexpr std::uint16_t kA = 0;
    EXPECT_EQ(modifierFlags({}, kA), 0U);
    EXPECT_EQ(modifierFlags({.capsLock = true}, kA), 0x10000U);
    EXPECT_EQ(modifierFlags({.shift = true}, kA), 0x20000U);
    EXPECT_EQ(modifierFlags({.control = true}, kA), 0x40000U);
    EXPECT_EQ(modifierFlags({.option = true}, kA), 0x80000U);
    EXPECT_EQ(modifierFlags({.command = true}, kA), 0x100000U);
    EXPECT_EQ(modifierFlags({.shift = true, .control = true, .option = true, .command = true}, kA), 0x1E0000U);
}

TEST(ModifierFlags, MarkTheNumberPad) {
    for (const std::uint16_t key : Keys{65, 67, 69, 71, 75, 76, 78, 81, 82, 83, 84, 85, 86, 87, 88, 89, 91, 92, 95}) {
        EXPECT_EQ(modifierFlags({}, key), 0x200000U) << key;
    }
}

TEST(ModifierFlags, MarkArrowsAsBoth) {
    for (const std::uint16_t key : Keys{123, 124, 125, 126}) {
        EXPECT_EQ(modifierFlags({}, key), 0xA00000U) << key;
    }
}

TEST(ModifierFlags, MarkFunctionAndNavigationKeys) {
    for (const std::uint16_t key : Keys{122, 120, 99,  118, 96, 97, 98, 100, 101, 109, 103, 111, 105,
                                        107, 113, 106, 64,  79, 80, 90, 115, 119, 116, 121, 117, 110}) {
        EXPECT_EQ(modifierFlags({}, key), 0x800000U) << key;
    }
    EXPECT_EQ(modifierFlags({}, 114), 0xC00000U); // Help
}

TEST(ModifierFlags, MarkNoOtherKeyAndNoDevice) {
    for (std::uint16_t key = 0; key < 256; ++key) {
        const std::uint64_t flags = modifierFlags({.capsLock = true, .option = true}, key);
        EXPECT_EQ(flags & 0xFFFFU, 0U) << key;
        EXPECT_EQ(flags & 0x1F0000U, 0x90000U) << key;
    }
    for (const std::uint16_t key : Keys{0, 1, 11, 36, 48, 49, 51, 53, 10, 93, 94, 102, 104, 72, 127, 200}) {
        EXPECT_EQ(modifierFlags({}, key), 0U) << key;
    }
    EXPECT_EQ(modifierFlags({}, kUnknownVirtualKeyCode), 0U);
}

} // namespace
} // namespace vantorel
