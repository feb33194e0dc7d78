// Vantorel. MIT licence, see LICENSE.
// The world of the Linux platform: its main loop, a folder on disk, shell scripts and servers on the loopback host.
#include <gtk/gtk.h>
#include <sys/stat.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <list>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/linux/application.h"
#include "platform/linux/window.h"
#include "tests/contract/linux_server.h"
#include "tests/contract/world.h"

namespace vantorel::contract {
namespace {

/// The one platform of the process, with its application registered. It lives until the process ends.
Platform& nativePlatform() {
    static Platform* const platform = [] {
        Platform* made = makeNativePlatform().release();
        auto& app = dynamic_cast<gtk::GtkApp&>(*made->application());
        auto* application = G_APPLICATION(app.application());
        g_application_set_flags(application, G_APPLICATION_NON_UNIQUE);
        if (g_application_register(application, nullptr, nullptr) == FALSE)
            throw std::runtime_error("no application");
        return made;
    }();
    return *platform;
}

class LinuxWorld final : public World {
public:
    LinuxWorld() {
        std::string name = (std::filesystem::temp_directory_path() / "vantorel-contract.XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr)
            throw std::runtime_error("no folder");
        folder_ = std::filesystem::canonical(name).string();
    }
    ~LinuxWorld() override { std::filesystem::remove_all(folder_); }

    Platform& platform() override { return nativePlatform(); }

    bool runUntil(const std::function<bool()>& condition, double seconds) override {
        // Wakes the loop now and then, so that conditions of other threads are seen.
        const guint pulse = g_timeout_add(
            2, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
        const double end = now() + seconds;
        bool holds = condition();
        while (!holds && now() < end) {
            g_main_context_iteration(nullptr, TRUE);
            holds = condition();
        }
        g_source_remove(pulse);
        return holds;
    }

    double now() override { return static_cast<double>(g_get_monotonic_time()) / G_USEC_PER_SEC; }

    std::string folder() override { return folder_; }
    void makeFile(const std::string& path, const std::string& bytes, unsigned mode) override {
        std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
        if (::chmod(path.c_str(), mode) != 0)
            throw std::runtime_error("no file");
    }
    void makeLink(const std::string& path, const std::string& target) override {
        std::filesystem::create_symlink(target, path);
    }
    unsigned modeOf(const std::string& path) override {
        struct stat found {};
        if (::stat(path.c_str(), &found) != 0)
            throw std::runtime_error("no file");
        return found.st_mode & 07777;
    }
    std::string makeProgram(const std::vector<ChildStep>& steps) override {
        const std::string path = folder_ + "/program" + std::to_string(programs_++);
        makeFile(path, "#!/bin/sh\n" + shellScript(steps), 0755);
        return path;
    }

    int serve(const ServerBehaviour& behaviour) override { return servers_.emplace_back(behaviour, requests_).port(); }
    int closedPort() override { return freePort(); }
    int requestCount() override { return requests_; }

    void resizeContent(Window& window, Size size) override {
        GtkWindow* native = dynamic_cast<gtk::NativeWindow&>(window).gtkWindow();
        const Size content = window.contentView()->bounds().size;
        int width = 0;
        int height = 0;
        gtk_window_get_default_size(native, &width, &height);
        gtk_window_set_default_size(native, width + static_cast<int>(size.width - content.width),
                                    height + static_cast<int>(size.height - content.height));
    }

private:
    std::string folder_;
    int programs_ = 0;
    std::atomic<int> requests_ = 0;
    std::list<LoopbackServer> servers_;
};

} // namespace

std::unique_ptr<World> makeWorld() { return std::make_unique<LinuxWorld>(); }

} // namespace vantorel::contract
