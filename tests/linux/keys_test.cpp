// Vantorel. MIT licence, see LICENSE.
// From the window system's keys to key events: positions, modifier words, characters.

#include "platform/linux/key_events.h"

#include <gtest/gtest.h>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace vantorel::gtk::test {
namespace {

constexpr unsigned kKeyA = 38;
constexpr unsigned kKeyShift = 50;
constexpr unsigned kKeyCapsLock = 66;
constexpr unsigned kKeyF5 = 71;
constexpr unsigned kKeyBeyond = 255;

TEST(CharactersTest, AreWhatTheKeyTypes) {
    EXPECT_EQ(charactersOf(XKB_KEY_a, false), "a");
    EXPECT_EQ(charactersOf(XKB_KEY_A, false), "A");
    EXPECT_EQ(charactersOf(XKB_KEY_eacute, false), "é");
    EXPECT_EQ(charactersOf(XKB_KEY_EuroSign, false), "€");
    EXPECT_EQ(charactersOf(0x0101f916, false), "🤖");
    EXPECT_EQ(charactersOf(XKB_KEY_space, false), " ");
    EXPECT_EQ(charactersOf(XKB_KEY_KP_5, false), "5");
}

TEST(CharactersTest, AreControlCharacters) {
    EXPECT_EQ(charactersOf(XKB_KEY_Return, false), "\r");
    EXPECT_EQ(charactersOf(XKB_KEY_Tab, false), "\t");
    EXPECT_EQ(charactersOf(XKB_KEY_Escape, false), "\x1b");
    EXPECT_EQ(charactersOf(XKB_KEY_BackSpace, false), "\x7f");
    EXPECT_EQ(charactersOf(XKB_KEY_KP_Enter, false), "\x03");
    EXPECT_EQ(charactersOf(XKB_KEY_ISO_Left_Tab, false), "\x19");
}

TEST(CharactersTest, TurnIntoControlCharactersWithControl) {
    EXPECT_EQ(charactersOf(XKB_KEY_a, true), "\x01");
    EXPECT_EQ(charactersOf(XKB_KEY_Z, true), "\x1a");
    EXPECT_EQ(charactersOf(XKB_KEY_bracketleft, true), "\x1b");
    EXPECT_EQ(charactersOf(XKB_KEY_at, true), std::string(1, '\0'));
    EXPECT_EQ(charactersOf(XKB_KEY_1, true), "1");
    EXPECT_EQ(charactersOf(XKB_KEY_space, true), " ");
    EXPECT_EQ(charactersOf(XKB_KEY_eacute, true), "é");
}

TEST(CharactersTest, AreEmptyForADeadKey) {
    EXPECT_EQ(charactersOf(XKB_KEY_dead_circumflex, false), "");
    EXPECT_EQ(charactersOf(XKB_KEY_dead_greek, false), "");
}

TEST(CharactersTest, AreNoneForAKeyThatTypesNothing) {
    for (const int symbol : {XKB_KEY_NoSymbol, XKB_KEY_Left, XKB_KEY_F5, XKB_KEY_Home, XKB_KEY_Delete, XKB_KEY_Print,
                             XKB_KEY_XF86AudioPlay, XKB_KEY_Multi_key}) {
        EXPECT_EQ(charactersOf(static_cast<unsigned>(symbol), false), std::nullopt) << symbol;
    }
}

TEST(KeyEventTest, HasPositionFlagsAndCharacters) {
    PressedKey press;
    press.keyCode = kKeyA;
    press.symbol = XKB_KEY_A;
    press.held.shift = true;
    const auto event = keyEventOf(press);
    ASSERT_TRUE(event);
    EXPECT_EQ(event->keyCode, 0);
    EXPECT_EQ(event->modifierFlags, modifier_bits::kShift);
    EXPECT_EQ(event->characters, "A");
}

TEST(KeyEventTest, HasTheFunctionBit) {
    const auto event = keyEventOf({kKeyF5, XKB_KEY_F5, {}});
    ASSERT_TRUE(event);
    EXPECT_EQ(event->keyCode, 96);
    EXPECT_EQ(event->modifierFlags, modifier_bits::kFunction);
    EXPECT_EQ(event->characters, std::nullopt);
}

TEST(KeyEventTest, BearsTheUnknownCodeWithoutAPosition) {
    for (const unsigned keyCode : {kKeyBeyond, 0U, 7U}) {
        const auto event = keyEventOf({keyCode, XKB_KEY_a, {}});
        ASSERT_TRUE(event);
        EXPECT_EQ(event->keyCode, kUnknownVirtualKeyCode);
    }
}

TEST(KeyEventTest, IsNoneForAModifier) {
    EXPECT_FALSE(keyEventOf({kKeyShift, XKB_KEY_Shift_L, {}}));
    EXPECT_FALSE(keyEventOf({kKeyShift, 0, {}}));
    EXPECT_FALSE(keyEventOf({kKeyA, XKB_KEY_Control_L, {}})) << "another position made a modifier by the layout";
    EXPECT_FALSE(keyEventOf({kKeyA, XKB_KEY_ISO_Next_Group, {}}));
    EXPECT_FALSE(keyEventOf({kKeyA, XKB_KEY_Mode_switch, {}}));
}

TEST(KeyEventTest, IsThereForAModifiersPositionThatTypes) {
    const auto event = keyEventOf({kKeyCapsLock, XKB_KEY_Escape, {}});
    ASSERT_TRUE(event);
    EXPECT_EQ(event->keyCode, 57);
    EXPECT_EQ(event->characters, "\x1b");
}

} // namespace
} // namespace vantorel::gtk::test
