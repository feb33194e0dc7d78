// Vantorel. MIT licence, see LICENSE.
// Required objects: one that is absent is a broken invariant and ends the process at once.
#pragma once

#include <memory>

namespace vantorel {

/// Prints that `name` is absent on standard error and aborts, after the log has been written.
[[noreturn]] void requiredObjectMissing(const char* name);

/// The object behind `pointer`; ends the process when there is none.
template<typename T>
T& require(const std::shared_ptr<T>& pointer, const char* name) {
    if (!pointer)
        requiredObjectMissing(name);
    return *pointer;
}

template<typename T>
T& require(T* pointer, const char* name) {
    if (pointer == nullptr)
        requiredObjectMissing(name);
    return *pointer;
}

} // namespace vantorel
