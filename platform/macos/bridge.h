// Vantorel. MIT licence, see LICENSE.
// Values across the border between C++ and Objective-C: texts, geometry, colours, errors.
#pragma once

#import <AppKit/AppKit.h>
#import <Foundation/Foundation.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/color.h"
#include "platform/geometry.h"
#include "platform/platform_error.h"

namespace vantorel::mac {

/// UTF-8 as NSString. Bytes that are no UTF-8 are taken one by one as Latin-1, so that nothing is ever nil.
NSString* toNSString(std::string_view text);

/// A path's bytes as the file system's own form.
NSString* toPath(const std::string& path);

/// "" for nil. Lone surrogates become U+FFFD.
std::string toText(NSString* text);

/// UTF-16 as UTF-8, with U+FFFD for each half of a character: the system converts such a text not at all.
std::string repairedUtf8(const std::vector<unichar>& units);

NSRect toNSRect(const Rect& rect);
Rect toRect(NSRect rect);
NSColor* toNSColor(const Color& color);

/// Nothing for nil.
std::optional<PlatformError> toPlatformError(NSError* error);

/// For an operation that has failed, whether or not it says why: no text is empty.
PlatformError toFailure(NSError* error);

/// Runs `function` where Objective-C is the caller: a C++ exception must not unwind through its frames, so it ends the
/// process.
template <typename Function, typename... Arguments>
auto guarded(Function&& function, Arguments&&... arguments) noexcept {
    return std::forward<Function>(function)(std::forward<Arguments>(arguments)...);
}

}  // namespace vantorel::mac
