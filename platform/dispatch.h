// Vantorel. MIT licence, see LICENSE.
// The seam to Dispatch: the main queue and a global queue.
#pragma once

#include <functional>

namespace vantorel {

/// A queue of blocks. Every function may be called from any thread; a block runs once, never inside the call.
class Queue {
public:
    virtual ~Queue() = default;

    /// Runs `block` later. On the main queue blocks run on the main thread, one at a time and in the order of the
    /// calls; on a global queue on some thread, beside others.
    virtual void async(std::function<void()> block) = 0;
    /// As async, no earlier than `seconds` from now.
    virtual void asyncAfter(double seconds, std::function<void()> block) = 0;
};

} // namespace vantorel
