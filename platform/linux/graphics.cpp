// Vantorel. MIT licence, see LICENSE.
// What GTK draws with.
#include "platform/linux/graphics.h"

#include <filesystem>
#include <system_error>

namespace vantorel::gtk {

Environment graphicsVariables(const Environment& inherited, bool hasGraphicsProcessor) {
    Environment variables;
    if (hasGraphicsProcessor)
        return variables;
    if (!inherited.contains("GSK_RENDERER"))
        variables["GSK_RENDERER"] = "cairo";
    if (!inherited.contains("GDK_DEBUG"))
        variables["GDK_DEBUG"] = "gl-disable";
    // The engine would find that out by itself, and warn about it.
    if (!inherited.contains("WEBKIT_DISABLE_COMPOSITING_MODE"))
        variables["WEBKIT_DISABLE_COMPOSITING_MODE"] = "1";
    return variables;
}

bool hasGraphicsProcessor(const std::string& devices) {
    std::error_code error;
    for (std::filesystem::directory_iterator entry(devices + "/dri", error), end; !error && entry != end;
         entry.increment(error)) {
        if (entry->path().filename().string().starts_with("renderD"))
            return true;
    }
    // The closed NVIDIA driver works without kernel mode setting, and then without a render node.
    return std::filesystem::exists(devices + "/nvidiactl", error);
}

} // namespace vantorel::gtk
