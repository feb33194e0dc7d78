// Vantorel. MIT licence, see LICENSE.
// Files over NSFileManager.
#import "platform/macos/files.h"

#import "platform/macos/bridge.h"
#include "platform/portable/text.h"

namespace vantorel::mac {

namespace {

class MacFileManager : public FileManager {
public:
    bool fileExists(const std::string& path) const override {
        return [NSFileManager.defaultManager fileExistsAtPath:toPath(path)];
    }
    std::optional<PlatformError> setPosixPermissions(const std::string& path, unsigned mode) override {
        NSError* error = nil;
        if ([NSFileManager.defaultManager setAttributes:@{NSFilePosixPermissions : @(mode)}
                                           ofItemAtPath:toPath(path)
                                                  error:&error]) {
            return std::nullopt;
        }
        return toFailure(error);
    }
    std::optional<std::string> readUtf8File(const std::string& path) const override {
        NSData* const data = [NSData dataWithContentsOfFile:toPath(path)];
        if (data == nil) return std::nullopt;
        std::string text(static_cast<const char*>(data.bytes), data.length);
        // NSString's own decoder swallows a byte order mark and lets non-characters pass; the bytes are judged as they are.
        if (!isValidUtf8(text)) return std::nullopt;
        return text;
    }
};

}  // namespace

std::unique_ptr<FileManager> makeFileManager() {
    return std::make_unique<MacFileManager>();
}

}  // namespace vantorel::mac
