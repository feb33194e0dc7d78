// Vantorel. MIT licence, see LICENSE.
// Where the application's bundle is.

#include "platform/linux/bundle.h"

#include <filesystem>
#include <system_error>
#include <utility>

namespace vantorel::gtk {

namespace {

class ExecutableBundle : public Bundle {
public:
    explicit ExecutableBundle(std::string path) : path_(std::move(path)) {}
    std::string bundlePath() const override { return path_; }

private:
    std::string path_;
};

} // namespace

std::string bundlePathOf(const std::string& executable) {
    const std::filesystem::path folder = std::filesystem::path(executable).parent_path();
    const std::filesystem::path contents = folder.parent_path();
    const std::filesystem::path bundle = contents.parent_path();
    if (folder.filename() == "Linux" && contents.filename() == "Contents" && bundle.extension() == ".app") {
        return bundle.string();
    }
    return folder.string();
}

std::string executablePath() {
    std::error_code failure;
    std::string path = std::filesystem::read_symlink("/proc/self/exe", failure).string();
    // The kernel's mark for a program whose file was replaced while it runs.
    constexpr std::string_view kDeleted = " (deleted)";
    if (path.ends_with(kDeleted)) {
        path.resize(path.size() - kDeleted.size());
    }
    return path;
}

std::unique_ptr<Bundle> makeBundle() { return std::make_unique<ExecutableBundle>(bundlePathOf(executablePath())); }

} // namespace vantorel::gtk
