// Vantorel. MIT licence, see LICENSE.
// What a failed platform operation tells the logic.
#pragma once

#include <string>

namespace vantorel {

/// An error as the platform words it. Both texts are UTF-8 and never empty.
struct PlatformError {
    /// For people: the platform's localised description.
    std::string localizedDescription;
    /// For the log: the printed form of the error object, which may name domain and code.
    std::string description;

    friend bool operator==(const PlatformError&, const PlatformError&) = default;
};

} // namespace vantorel
