// Vantorel. MIT licence, see LICENSE.
// Key positions as an X server could report them, and the modifier word.
#include "platform/portable/virtual_keys.h"

#include "tests/fuzz/oracle.h"

#include <cstring>

using namespace vantorel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::uint32_t position = 0;
    if (size < sizeof position + 1) {
        return 0;
    }
    std::memcpy(&position, data, sizeof position);
    const unsigned bits = data[sizeof position];
    const HeldModifiers held{.capsLock = (bits & 1U) != 0,
                             .shift = (bits & 2U) != 0,
                             .control = (bits & 4U) != 0,
                             .option = (bits & 8U) != 0,
                             .command = (bits & 16U) != 0};
    const std::optional<std::uint16_t> key = virtualKeyCode(position);
    fuzz::check(!key || *key < 0x7F, "a key has one of the documented codes");
    const std::uint16_t code = key.value_or(static_cast<std::uint16_t>(position));
    const std::uint64_t flags = modifierFlags(held, code);
    fuzz::check((flags & ~std::uint64_t{0xFF0000}) == 0, "no bits but the eight");
    fuzz::check((flags & 0x1F0000U) == std::uint64_t{bits & 31U} << 16U, "held modifiers stand in order from bit 16");
    fuzz::check((flags & ~std::uint64_t{0x1F0000}) == modifierFlags({}, code),
                "the key's own bits do not depend on them");
    fuzz::check(!isModifierKey(code) || (flags & 0xE00000U) == 0, "a modifier key has no bits of its own");
    return 0;
}
