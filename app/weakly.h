// Vantorel. MIT licence, see LICENSE.
// Late callbacks: the one way in which closures that may outlive the controller hold it.
#pragma once

#include <memory>
#include <utility>

namespace vantorel {

/// A closure that calls `function(owner, arguments…)` while the owner of `weak` lives, and does nothing afterwards.
template<typename Owner, typename Function>
auto weakly(std::weak_ptr<Owner> weak, Function function) {
    return [weak = std::move(weak), function = std::move(function)](auto&&... arguments) {
        if (const std::shared_ptr<Owner> owner = weak.lock()) {
            function(*owner, std::forward<decltype(arguments)>(arguments)...);
        }
    };
}

} // namespace vantorel
