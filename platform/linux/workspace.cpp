// Vantorel. MIT licence, see LICENSE.
// Opening addresses with the user's handlers.
#include "platform/linux/workspace.h"

#include <gtk/gtk.h>

#include "platform/linux/main_thread.h"
#include "platform/linux/object.h"

namespace vantorel::gtk {
namespace {

class DesktopWorkspace : public Workspace {
public:
    explicit DesktopWorkspace(std::vector<std::string> unwanted) : unwanted_(std::move(unwanted)) {}

    void openUrl(const std::string& address) override {
        assertMainThread();
        const GText scheme(g_uri_parse_scheme(address.c_str()));
        if (!scheme || g_utf8_validate(address.data(), static_cast<gssize>(address.size()), nullptr) == FALSE)
            return;
        const auto context = launchContext();
        for (const std::string& name : unwanted_) {
            g_app_launch_context_unsetenv(context.get(), name.c_str());
        }
        // No callback: whether it worked is not reported, and without a handler nothing happens.
        g_app_info_launch_default_for_uri_async(address.c_str(), context.get(), nullptr, nullptr, nullptr);
    }

private:
    static Object<GAppLaunchContext> launchContext() {
        GdkDisplay* display = gdk_display_get_default();
        if (display == nullptr)
            return Object<GAppLaunchContext>::take(g_app_launch_context_new());
        return Object<GAppLaunchContext>::take(G_APP_LAUNCH_CONTEXT(gdk_display_get_app_launch_context(display)));
    }

    std::vector<std::string> unwanted_;
};

} // namespace

std::unique_ptr<Workspace> makeWorkspace(std::vector<std::string> unwanted) {
    return std::make_unique<DesktopWorkspace>(std::move(unwanted));
}

} // namespace vantorel::gtk
