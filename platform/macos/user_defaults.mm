// Vantorel. MIT licence, see LICENSE.
// The user's preferences over NSUserDefaults.
#import "platform/macos/user_defaults.h"

#import "platform/macos/bridge.h"

namespace vantorel::mac {

namespace {

class MacUserDefaults : public UserDefaults {
public:
    bool hasObject(const std::string& key) const override { return [defaults_ objectForKey:toNSString(key)] != nil; }
    bool boolForKey(const std::string& key) const override { return [defaults_ boolForKey:toNSString(key)]; }
    std::optional<std::string> stringForKey(const std::string& key) const override {
        NSString* const value = [defaults_ stringForKey:toNSString(key)];
        if (value == nil) return std::nullopt;
        return toText(value);
    }
    void setBool(bool value, const std::string& key) override { [defaults_ setBool:value forKey:toNSString(key)]; }
    void setString(const std::string& value, const std::string& key) override {
        [defaults_ setObject:toNSString(value) forKey:toNSString(key)];
    }

private:
    NSUserDefaults* defaults_ = NSUserDefaults.standardUserDefaults;
};

}  // namespace

std::unique_ptr<UserDefaults> makeUserDefaults() {
    return std::make_unique<MacUserDefaults>();
}

}  // namespace vantorel::mac
