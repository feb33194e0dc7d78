// Vantorel. MIT licence, see LICENSE.
// The application's own environment over NSProcessInfo.
#import "platform/macos/process_info.h"

#import "platform/macos/bridge.h"

namespace vantorel::mac {

namespace {

class MacProcessInfo : public ProcessInfo {
public:
    Environment environment() const override {
        Environment environment;
        NSDictionary<NSString*, NSString*>* const entries = NSProcessInfo.processInfo.environment;
        for (NSString* name in entries) environment.insert_or_assign(toText(name), toText([entries objectForKey:name]));
        return environment;
    }
};

}  // namespace

std::unique_ptr<ProcessInfo> makeProcessInfo() {
    return std::make_unique<MacProcessInfo>();
}

}  // namespace vantorel::mac
