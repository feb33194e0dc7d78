// Vantorel. MIT licence, see LICENSE.
// The application's bundle over NSBundle.
#import "platform/macos/bundle.h"

#import "platform/macos/bridge.h"

namespace vantorel::mac {

namespace {

class MacBundle : public Bundle {
public:
    std::string bundlePath() const override { return toText(NSBundle.mainBundle.bundlePath); }
};

}  // namespace

std::unique_ptr<Bundle> makeBundle() {
    return std::make_unique<MacBundle>();
}

}  // namespace vantorel::mac
