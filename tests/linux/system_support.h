// Vantorel. MIT licence, see LICENSE.
// What the tests of processes, files, queues and keys share: temporary folders and bounded waiting.
#pragma once

#include <pthread.h>
#include <sys/stat.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <thread>

#include <glib.h>
#include <stdlib.h>

namespace vantorel::gtk::test {

/// A folder of its own that goes away with everything in it.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "vantorel-test.XXXXXX").string();
        path_ = ::mkdtemp(name.data());
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::string file(const std::string& name) const { return (path_ / name).string(); }

private:
    std::filesystem::path path_;
};

/// No further thread can be started as long as it lives: none of the size that is then asked for has room.
class NoThreads {
public:
    NoThreads() {
        pthread_getattr_default_np(&before_);
        pthread_attr_t huge;
        pthread_attr_init(&huge);
        pthread_attr_setstacksize(&huge, std::size_t{1} << 47);
        pthread_setattr_default_np(&huge);
        pthread_attr_destroy(&huge);
    }
    ~NoThreads() {
        pthread_setattr_default_np(&before_);
        pthread_attr_destroy(&before_);
    }
    NoThreads(const NoThreads&) = delete;
    NoThreads& operator=(const NoThreads&) = delete;

private:
    pthread_attr_t before_{};
};

inline void writeFile(const std::string& path, const std::string& content, unsigned mode = 0644) {
    std::ofstream(path, std::ios::binary) << content;
    ::chmod(path.c_str(), static_cast<mode_t>(mode));
}

inline std::string readFile(const std::string& path) {
    std::ostringstream content;
    content << std::ifstream(path, std::ios::binary).rdbuf();
    return content.str();
}

inline constexpr std::chrono::seconds kPatience{10};

/// Waits until `condition` holds; false when it does not within `patience`. The main loop does not run meanwhile.
inline bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds patience = kPatience) {
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

/// As waitUntil, with the main loop running.
inline bool runLoopUntil(const std::function<bool()>& condition, std::chrono::milliseconds patience = kPatience) {
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        if (!g_main_context_iteration(nullptr, FALSE)) {
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        }
    }
    return true;
}

} // namespace vantorel::gtk::test
