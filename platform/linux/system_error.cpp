// Vantorel. MIT licence, see LICENSE.
// Errors of system calls in the words of the seam.

#include "platform/linux/system_error.h"

#include <glib.h>

#include <cstring>

namespace vantorel::gtk {

namespace {

// File names may hold any bytes; what goes on screen is UTF-8.
std::string displayName(const std::string& path) {
    char* text = g_filename_display_name(path.c_str());
    std::string result = text;
    g_free(text);
    return result;
}

std::string symbolicName(int code) {
    const char* name = strerrorname_np(code);
    return name != nullptr ? name : "unknown";
}

} // namespace

PlatformError systemError(std::string_view attempt, const std::string& path, int code, std::string_view note) {
    PlatformError error;
    error.localizedDescription = attempt;
    if (!path.empty()) {
        error.localizedDescription += " \"" + displayName(path) + "\"";
    }
    error.localizedDescription += std::string(": ") + g_strerror(code);
    if (!note.empty()) {
        error.localizedDescription += " (" + std::string(note) + ")";
    }
    error.description = error.localizedDescription + " [" + symbolicName(code) + " " + std::to_string(code) + "]";
    return error;
}

} // namespace vantorel::gtk
