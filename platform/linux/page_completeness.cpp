// Vantorel. MIT licence, see LICENSE.
// Whether a page that the engine calls loaded came over whole.
#include "platform/linux/page_completeness.h"

#include <cstdint>
#include <memory>
#include <utility>

#include "platform/linux/object.h"

namespace vantorel::gtk {

namespace {

/// Longer pages are believed: fetching their bytes once more would cost more than the answer is worth.
constexpr std::uint64_t kLongestChecked = 16U << 20U;

struct Check {
    std::uint64_t announced = 0;
    std::function<void(bool)> next;
};

/// The length that the server announced, or 0 when nothing can be told from it.
std::uint64_t announcedLength(WebKitWebResource* page) {
    WebKitURIResponse* response = page != nullptr ? webkit_web_resource_get_response(page) : nullptr;
    SoupMessageHeaders* headers = response != nullptr ? webkit_uri_response_get_http_headers(response) : nullptr;
    if (headers == nullptr || soup_message_headers_get_one(headers, "Content-Encoding") != nullptr ||
        soup_message_headers_get_one(headers, "Transfer-Encoding") != nullptr) {
        return 0;
    }
    return webkit_uri_response_get_content_length(response);
}

} // namespace

void checkWhole(WebKitWebView* view, std::function<void(bool whole)> next) {
    WebKitWebResource* page = webkit_web_view_get_main_resource(view);
    const std::uint64_t announced = announcedLength(page);
    if (announced == 0 || announced > kLongestChecked) {
        next(true);
        return;
    }
    webkit_web_resource_get_data(
        page, nullptr,
        [](GObject* source, GAsyncResult* result, gpointer data) {
            const std::unique_ptr<Check> check(static_cast<Check*>(data));
            gsize length = 0;
            GError* error = nullptr;
            const std::unique_ptr<guchar, GFree> bytes(
                webkit_web_resource_get_data_finish(WEBKIT_WEB_RESOURCE(source), result, &length, &error));
            const GErrorPointer owned(error);
            guarded(check->next, error != nullptr || length >= check->announced);
        },
        new Check{announced, std::move(next)});
}

} // namespace vantorel::gtk
