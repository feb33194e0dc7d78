// Vantorel. MIT licence, see LICENSE.
// The thirteen hotkeys: which key, with all four modifiers held, stands for which command of the page.
#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace vantorel {

/// Command names by virtual key code (a position, not a letter), in ascending order of the code.
using HotkeyTable = std::map<std::uint16_t, std::string>;

/// The table; it never changes.
HotkeyTable hotkeyTable();

/// The codes of `table` as the log shows them: "[1, 2, 3]".
std::string keyCodeList(const HotkeyTable& table);

} // namespace vantorel
