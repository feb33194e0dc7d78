// Vantorel. MIT licence, see LICENSE.
// Key presses in the application's own windows as GTK delivers them, for displays where there is no other way.
#pragma once

#include <functional>
#include <memory>

#include "platform/appkit.h"

namespace vantorel::gtk {

/// Watches every top level window, those that come later included, before their own shortcuts and content see the key.
class KeyControllers {
public:
    /// Says whether the press goes on into the window.
    using Handler = std::function<bool(const KeyEvent&)>;

    /// `handler` is called on the main thread, once for each press and each repeat.
    static std::unique_ptr<KeyControllers> start(Handler handler);

    virtual ~KeyControllers() = default;

protected:
    KeyControllers() = default;
};

} // namespace vantorel::gtk
