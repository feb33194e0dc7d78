// Vantorel. MIT licence, see LICENSE.
// Every key press of an X server, through its RECORD extension.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/appkit.h"
#include "platform/linux/window_numbers.h"

namespace vantorel::gtk {

/// Whom a key press was meant for.
enum class KeyTarget {
    ownWindow,
    otherProgram,
};

/// Watches the server from a thread of its own. Nothing is grabbed and nothing is taken away from anybody.
class RecordSource {
public:
    using Handler = std::function<void(const KeyEvent&, KeyTarget)>;

    /// Starts to watch `displayName`; `handler` is called on the source's thread, once for each press and each repeat.
    /// Null when the server cannot be reached or has no RECORD extension.
    static std::unique_ptr<RecordSource> start(const std::string& displayName, WindowNumbers ownWindows,
                                               Handler handler);

    /// Ends the thread; no call of the handler comes after it.
    virtual ~RecordSource() = default;

protected:
    RecordSource() = default;
};

} // namespace vantorel::gtk
