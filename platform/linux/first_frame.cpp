// Vantorel. MIT licence, see LICENSE.
// When a new page has drawn for the first time.
#include "platform/linux/first_frame.h"

#include <memory>
#include <string_view>
#include <utility>

#include "platform/linux/object.h"

namespace vantorel::gtk {

namespace {

using Next = std::function<void()>;

/// A callback comes before its frame is drawn: the second one tells that the first frame has been.
constexpr std::string_view kTwoFrames =
    "await new Promise(done => requestAnimationFrame(() => requestAnimationFrame(done))); return 0";
/// A world of its own, in which the page cannot have put another function in that one's place.
constexpr const char* kWorld = "vantorel-frames";

void completed(GObject* source, GAsyncResult* result, gpointer data) {
    const std::unique_ptr<Next> next(static_cast<Next*>(data));
    GError* error = nullptr;
    const auto value = Object<JSCValue>::take(
        webkit_web_view_call_async_javascript_function_finish(WEBKIT_WEB_VIEW(source), result, &error));
    const GErrorPointer owned(error);
    guarded(*next);
}

} // namespace

void whenDrawn(WebKitWebView* view, std::function<void()> next) {
    webkit_web_view_call_async_javascript_function(view, kTwoFrames.data(), static_cast<gssize>(kTwoFrames.size()),
                                                   nullptr, kWorld, nullptr, nullptr, completed,
                                                   new Next(std::move(next)));
}

} // namespace vantorel::gtk
