// Vantorel. MIT licence, see LICENSE.
// Owning handles for what GLib and libsoup hand out.
#pragma once

#include <libsoup/soup.h>

#include <memory>

namespace vantorel::devserver {

/// Deleter that drops one reference to a GObject.
struct ObjectUnref {
    void operator()(gpointer object) const noexcept { g_object_unref(object); }
};

struct ErrorFree {
    void operator()(GError* error) const noexcept { g_error_free(error); }
};

/// One owned reference to a GObject of type T.
template<typename T>
using ObjectPtr = std::unique_ptr<T, ObjectUnref>;

/// An owned error; empty when the call went well.
using ErrorPtr = std::unique_ptr<GError, ErrorFree>;

} // namespace vantorel::devserver
