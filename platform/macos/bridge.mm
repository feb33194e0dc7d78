// Vantorel. MIT licence, see LICENSE.
// Values across the border between C++ and Objective-C.
#import "platform/macos/bridge.h"

namespace vantorel::mac {

namespace {

NSColor* paletteColor(SystemColor color) {
    switch (color) {
        case SystemColor::clear:
            return NSColor.clearColor;
        case SystemColor::orange:
            return NSColor.orangeColor;
        case SystemColor::red:
            return NSColor.redColor;
        case SystemColor::systemGreen:
            return NSColor.systemGreenColor;
    }
    return NSColor.clearColor;
}

}  // namespace

NSString* toNSString(std::string_view text) {
    NSString* const utf8 = [[NSString alloc] initWithBytes:text.data() length:text.size() encoding:NSUTF8StringEncoding];
    if (utf8 != nil) return utf8;
    return [[NSString alloc] initWithBytes:text.data() length:text.size() encoding:NSISOLatin1StringEncoding];
}

NSString* toPath(const std::string& path) {
    return [NSFileManager.defaultManager stringWithFileSystemRepresentation:path.c_str() length:path.size()];
}

std::string toText(NSString* text) {
    if (text == nil) return {};
    NSData* const bytes = [text dataUsingEncoding:NSUTF8StringEncoding allowLossyConversion:YES];
    return {static_cast<const char*>(bytes.bytes), bytes.length};
}

NSRect toNSRect(const Rect& rect) {
    return NSMakeRect(rect.origin.x, rect.origin.y, rect.size.width, rect.size.height);
}

Rect toRect(NSRect rect) {
    return {{rect.origin.x, rect.origin.y}, {rect.size.width, rect.size.height}};
}

NSColor* toNSColor(const Color& color) {
    if (const auto* const named = std::get_if<SystemColor>(&color)) return paletteColor(*named);
    const auto& rgb = std::get<CalibratedRgb>(color);
    return [NSColor colorWithCalibratedRed:rgb.red green:rgb.green blue:rgb.blue alpha:rgb.alpha];
}

std::optional<PlatformError> toPlatformError(NSError* error) {
    if (error == nil) return std::nullopt;
    return PlatformError{toText(error.localizedDescription), toText(error.description)};
}

PlatformError toFailure(NSError* error) {
    return toPlatformError(error).value_or(PlatformError{"Unknown error", "Unknown error"});
}

}  // namespace vantorel::mac
