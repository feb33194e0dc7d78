// Vantorel. MIT licence, see LICENSE.
// Key positions and held modifiers in the terms of the hotkey table: virtual key codes and the modifier word.
#include "platform/portable/virtual_keys.h"

#include <algorithm>
#include <array>

namespace vantorel {
namespace {

struct KeyPosition {
    unsigned evdevCode;
    std::uint16_t virtualKey;
};

// Positions are named by what is printed there on a US keyboard. Where a PC keyboard has a key that Apple's lack, the
// key at the same place of Apple's full-size keyboard stands for it: Insert is Help, Num Lock is Clear, and Print
// Screen, Scroll Lock and Pause are F13 to F15. The two extra keys of ISO keyboards are told apart by position: the one
// left of 1 is Grave (50) as on US keyboards, the one between left Shift and Z is Section (10).
constexpr std::array kPositions = {
    KeyPosition{1, 53},    // Escape
    KeyPosition{2, 18},    // 1
    KeyPosition{3, 19},    // 2
    KeyPosition{4, 20},    // 3
    KeyPosition{5, 21},    // 4
    KeyPosition{6, 23},    // 5
    KeyPosition{7, 22},    // 6
    KeyPosition{8, 26},    // 7
    KeyPosition{9, 28},    // 8
    KeyPosition{10, 25},   // 9
    KeyPosition{11, 29},   // 0
    KeyPosition{12, 27},   // Minus
    KeyPosition{13, 24},   // Equal
    KeyPosition{14, 51},   // Backspace (Delete)
    KeyPosition{15, 48},   // Tab
    KeyPosition{16, 12},   // Q
    KeyPosition{17, 13},   // W
    KeyPosition{18, 14},   // E
    KeyPosition{19, 15},   // R
    KeyPosition{20, 17},   // T
    KeyPosition{21, 16},   // Y
    KeyPosition{22, 32},   // U
    KeyPosition{23, 34},   // I
    KeyPosition{24, 31},   // O
    KeyPosition{25, 35},   // P
    KeyPosition{26, 33},   // Left bracket
    KeyPosition{27, 30},   // Right bracket
    KeyPosition{28, 36},   // Return
    KeyPosition{29, 59},   // Left Control
    KeyPosition{30, 0},    // A
    KeyPosition{31, 1},    // S
    KeyPosition{32, 2},    // D
    KeyPosition{33, 3},    // F
    KeyPosition{34, 5},    // G
    KeyPosition{35, 4},    // H
    KeyPosition{36, 38},   // J
    KeyPosition{37, 40},   // K
    KeyPosition{38, 37},   // L
    KeyPosition{39, 41},   // Semicolon
    KeyPosition{40, 39},   // Quote
    KeyPosition{41, 50},   // Grave
    KeyPosition{42, 56},   // Left Shift
    KeyPosition{43, 42},   // Backslash; on ISO keyboards the key left of Return
    KeyPosition{44, 6},    // Z
    KeyPosition{45, 7},    // X
    KeyPosition{46, 8},    // C
    KeyPosition{47, 9},    // V
    KeyPosition{48, 11},   // B
    KeyPosition{49, 45},   // N
    KeyPosition{50, 46},   // M
    KeyPosition{51, 43},   // Comma
    KeyPosition{52, 47},   // Period
    KeyPosition{53, 44},   // Slash
    KeyPosition{54, 60},   // Right Shift
    KeyPosition{55, 67},   // Number pad *
    KeyPosition{56, 58},   // Left Alt (Option)
    KeyPosition{57, 49},   // Space
    KeyPosition{58, 57},   // Caps Lock
    KeyPosition{59, 122},  // F1
    KeyPosition{60, 120},  // F2
    KeyPosition{61, 99},   // F3
    KeyPosition{62, 118},  // F4
    KeyPosition{63, 96},   // F5
    KeyPosition{64, 97},   // F6
    KeyPosition{65, 98},   // F7
    KeyPosition{66, 100},  // F8
    KeyPosition{67, 101},  // F9
    KeyPosition{68, 109},  // F10
    KeyPosition{69, 71},   // Num Lock (Clear)
    KeyPosition{70, 107},  // Scroll Lock (F14)
    KeyPosition{71, 89},   // Number pad 7
    KeyPosition{72, 91},   // Number pad 8
    KeyPosition{73, 92},   // Number pad 9
    KeyPosition{74, 78},   // Number pad -
    KeyPosition{75, 86},   // Number pad 4
    KeyPosition{76, 87},   // Number pad 5
    KeyPosition{77, 88},   // Number pad 6
    KeyPosition{78, 69},   // Number pad +
    KeyPosition{79, 83},   // Number pad 1
    KeyPosition{80, 84},   // Number pad 2
    KeyPosition{81, 85},   // Number pad 3
    KeyPosition{82, 82},   // Number pad 0
    KeyPosition{83, 65},   // Number pad decimal point
    KeyPosition{86, 10},   // ISO: between left Shift and Z
    KeyPosition{87, 103},  // F11
    KeyPosition{88, 111},  // F12
    KeyPosition{89, 94},   // JIS: Ro (Underscore)
    KeyPosition{90, 104},  // JIS: Katakana (Kana)
    KeyPosition{91, 104},  // JIS: Hiragana (Kana)
    KeyPosition{92, 104},  // JIS: Henkan, right of Space (Kana)
    KeyPosition{93, 104},  // JIS: Katakana/Hiragana (Kana)
    KeyPosition{94, 102},  // JIS: Muhenkan, left of Space (Eisu)
    KeyPosition{95, 95},   // JIS: number pad comma
    KeyPosition{96, 76},   // Number pad Enter
    KeyPosition{97, 62},   // Right Control
    KeyPosition{98, 75},   // Number pad /
    KeyPosition{99, 105},  // Print Screen (F13)
    KeyPosition{100, 61},  // Right Alt (Option)
    KeyPosition{102, 115}, // Home
    KeyPosition{103, 126}, // Up
    KeyPosition{104, 116}, // Page Up
    KeyPosition{105, 123}, // Left
    KeyPosition{106, 124}, // Right
    KeyPosition{107, 119}, // End
    KeyPosition{108, 125}, // Down
    KeyPosition{109, 121}, // Page Down
    KeyPosition{110, 114}, // Insert (Help)
    KeyPosition{111, 117}, // Delete (Forward Delete)
    KeyPosition{113, 74},  // Mute
    KeyPosition{114, 73},  // Volume Down
    KeyPosition{115, 72},  // Volume Up
    KeyPosition{117, 81},  // Number pad =
    KeyPosition{119, 113}, // Pause (F15)
    KeyPosition{121, 95},  // Number pad comma
    KeyPosition{122, 104}, // Lang 1: Kana (Hangul on Korean keyboards)
    KeyPosition{123, 102}, // Lang 2: Eisu (Hanja on Korean keyboards)
    KeyPosition{124, 93},  // JIS: Yen
    KeyPosition{125, 55},  // Left Super (Command)
    KeyPosition{126, 54},  // Right Super (Command)
    KeyPosition{127, 110}, // Menu
    KeyPosition{138, 114}, // Help
    KeyPosition{183, 105}, // F13
    KeyPosition{184, 107}, // F14
    KeyPosition{185, 113}, // F15
    KeyPosition{186, 106}, // F16
    KeyPosition{187, 64},  // F17
    KeyPosition{188, 79},  // F18
    KeyPosition{189, 80},  // F19
    KeyPosition{190, 90},  // F20
    KeyPosition{464, 63},  // Fn
};

constexpr bool isBefore(const KeyPosition& left, const KeyPosition& right) { return left.evdevCode < right.evdevCode; }
static_assert(std::is_sorted(kPositions.begin(), kPositions.end(), isBefore));

constexpr std::uint16_t kHelpKey = 114;
constexpr std::uint16_t kFirstArrowKey = 123; // Left, Right, Down, Up
constexpr std::uint16_t kLastArrowKey = 126;

// . * + Clear / Enter - = 0 to 7, 8, 9 and the Japanese comma.
constexpr std::array<std::uint16_t, 19> kNumberPadKeys = {65, 67, 69, 71, 75, 76, 78, 81, 82, 83,
                                                          84, 85, 86, 87, 88, 89, 91, 92, 95};

// The keys, arrows apart, whose characters lie in AppKit's function key range: F17 to F20 (64, 79, 80, 90), F5, F6, F7,
// F3, F8, F9, F11, F13, F16, F14, F10, Menu, F12, F15, Help, Home, Page Up, Forward Delete, F4, End, F2, Page Down, F1.
constexpr std::array<std::uint16_t, 27> kFunctionKeys = {64,  79,  80,  90,  96,  97,  98,  99,  100,
                                                         101, 103, 105, 106, 107, 109, 110, 111, 113,
                                                         114, 115, 116, 117, 118, 119, 120, 121, 122};

static_assert(std::is_sorted(kNumberPadKeys.begin(), kNumberPadKeys.end()));
static_assert(std::is_sorted(kFunctionKeys.begin(), kFunctionKeys.end()));

bool isArrowKey(std::uint16_t virtualKey) { return virtualKey >= kFirstArrowKey && virtualKey <= kLastArrowKey; }

} // namespace

std::optional<std::uint16_t> virtualKeyCode(unsigned evdevCode) {
    const auto found = std::lower_bound(kPositions.begin(), kPositions.end(), KeyPosition{evdevCode, 0}, isBefore);
    if (found == kPositions.end() || found->evdevCode != evdevCode) {
        return std::nullopt;
    }
    return found->virtualKey;
}

bool isModifierKey(std::uint16_t virtualKey) {
    constexpr std::uint16_t kRightCommand = 54;
    constexpr std::uint16_t kFn = 63; // between them: Command, Shift, Caps Lock, Option, Control and the right ones
    return virtualKey >= kRightCommand && virtualKey <= kFn;
}

std::uint64_t modifierFlags(const HeldModifiers& held, std::uint16_t virtualKey) {
    using namespace modifier_bits;
    const bool onNumberPad = std::binary_search(kNumberPadKeys.begin(), kNumberPadKeys.end(), virtualKey);
    const bool isFunction = std::binary_search(kFunctionKeys.begin(), kFunctionKeys.end(), virtualKey);
    const bool isArrow = isArrowKey(virtualKey);
    std::uint64_t flags = 0;
    flags |= held.capsLock ? kCapsLock : 0;
    flags |= held.shift ? kShift : 0;
    flags |= held.control ? kControl : 0;
    flags |= held.option ? kOption : 0;
    flags |= held.command ? kCommand : 0;
    flags |= onNumberPad || isArrow ? kNumericPad : 0;
    flags |= isFunction || isArrow ? kFunction : 0;
    flags |= virtualKey == kHelpKey ? kHelp : 0;
    return flags;
}

} // namespace vantorel
