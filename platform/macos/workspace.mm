// Vantorel. MIT licence, see LICENSE.
// The user's desktop over NSWorkspace.
#import "platform/macos/workspace.h"

#import "platform/macos/bridge.h"

namespace vantorel::mac {

namespace {

class MacWorkspace : public Workspace {
public:
    void openUrl(const std::string& address) override {
        NSURL* const url = [NSURL URLWithString:toNSString(address)];
        if (url != nil) [NSWorkspace.sharedWorkspace openURL:url];
    }
};

}  // namespace

std::unique_ptr<Workspace> makeWorkspace() {
    return std::make_unique<MacWorkspace>();
}

}  // namespace vantorel::mac
