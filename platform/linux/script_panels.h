// Vantorel. MIT licence, see LICENSE.
// What a page's scripts ask of the user: alert, confirm, prompt, and leave to go.
#pragma once

#include <webkit/webkit.h>

#include "platform/webkit.h"

namespace vantorel::gtk {

/// Puts the question of `dialog` to `delegate`, which may answer before or after this returns; the page's script stands
/// still until then. Without a delegate the question is answered as if dismissed. A page's wish to be asked before it
/// is left is not heard: reload and quit go on. Always true: the engine's own dialog is not wanted.
bool runScriptDialog(WebKitScriptDialog* dialog, WebView& view, const std::shared_ptr<UiDelegate>& delegate);

} // namespace vantorel::gtk
