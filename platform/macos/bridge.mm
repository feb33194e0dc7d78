// Vantorel. MIT licence, see LICENSE.
// Values across the border between C++ and Objective-C.
#import "platform/macos/bridge.h"

#include <cstdint>

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

constexpr unichar kReplacement = 0xFFFD;

bool isLeading(unichar unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}

bool isTrailing(unichar unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}

void appendUtf8(std::string& text, std::uint32_t character) {
    constexpr std::uint32_t kTwoBytes = 0x80;
    constexpr std::uint32_t kThreeBytes = 0x800;
    constexpr std::uint32_t kFourBytes = 0x10000;
    const auto rest = [character](unsigned shift) { return static_cast<char>(0x80U | ((character >> shift) & 0x3FU)); };
    if (character < kTwoBytes) {
        text += static_cast<char>(character);
    } else if (character < kThreeBytes) {
        text += {static_cast<char>(0xC0U | (character >> 6U)), rest(0)};
    } else if (character < kFourBytes) {
        text += {static_cast<char>(0xE0U | (character >> 12U)), rest(6), rest(0)};
    } else {
        text += {static_cast<char>(0xF0U | (character >> 18U)), rest(12), rest(6), rest(0)};
    }
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

std::string repairedUtf8(const std::vector<unichar>& units) {
    std::string text;
    for (std::size_t place = 0; place < units.size(); ++place) {
        const unichar unit = units[place];
        if (isLeading(unit) && place + 1 < units.size() && isTrailing(units[place + 1])) {
            ++place;
            appendUtf8(text, 0x10000U + ((unit - 0xD800U) << 10U) + (units[place] - 0xDC00U));
        } else {
            appendUtf8(text, isLeading(unit) || isTrailing(unit) ? kReplacement : unit);
        }
    }
    return text;
}

std::string toText(NSString* text) {
    if (text == nil) return {};
    NSData* const bytes = [text dataUsingEncoding:NSUTF8StringEncoding allowLossyConversion:NO];
    // Each unit of UTF-16 takes a byte or more; one system gives no data for what it cannot convert, another empty data.
    if (bytes != nil && bytes.length >= text.length) return {static_cast<const char*>(bytes.bytes), bytes.length};
    std::vector<unichar> units(text.length);
    [text getCharacters:units.data() range:NSMakeRange(0, units.size())];
    return repairedUtf8(units);
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
