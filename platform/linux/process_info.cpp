// Vantorel. MIT licence, see LICENSE.
// The application's own environment.

#include "platform/linux/process_info.h"

#include <unistd.h>

#include <string_view>
#include <utility>

namespace vantorel::gtk {

namespace {

class SnapshotProcessInfo : public ProcessInfo {
public:
    explicit SnapshotProcessInfo(Environment snapshot) : environment_(std::move(snapshot)) {}
    Environment environment() const override { return environment_; }

private:
    Environment environment_;
};

} // namespace

Environment currentEnvironment() {
    Environment environment;
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
        const std::string_view text = *entry;
        const std::size_t separator = text.find('=');
        if (separator != std::string_view::npos) {
            environment.emplace(text.substr(0, separator), text.substr(separator + 1));
        }
    }
    return environment;
}

std::unique_ptr<ProcessInfo> makeProcessInfo(Environment snapshot) {
    return std::make_unique<SnapshotProcessInfo>(std::move(snapshot));
}

std::unique_ptr<ProcessInfo> makeProcessInfo() { return makeProcessInfo(currentEnvironment()); }

} // namespace vantorel::gtk
