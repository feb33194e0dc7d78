// Vantorel. MIT licence, see LICENSE.
// The thirteen hotkeys.
#include "hotkeys/hotkey_table.h"

namespace vantorel {

HotkeyTable hotkeyTable() {
    return {
        {49, "voice"},              // Space
        {1, "screenshot_active"},   // S
        {11, "screenshot_browser"}, // B
        {12, "sql"},                // Q
        {46, "algo"},               // M
        {2, "design"},              // D
        {3, "voice_design"},        // F
        {15, "review"},             // R
        {32, "quiz"},               // U
        {6, "stop"},                // Z
        {13, "clear"},              // W
        {4, "help"},                // H
        {34, "status"},             // I
    };
}

std::string keyCodeList(const HotkeyTable& table) {
    std::string list = "[";
    for (const auto& [keyCode, name] : table) {
        if (list.size() > 1)
            list += ", ";
        list += std::to_string(keyCode);
    }
    return list + "]";
}

} // namespace vantorel
