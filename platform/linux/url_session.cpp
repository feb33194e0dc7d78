// Vantorel. MIT licence, see LICENSE.
// HTTP without a window, on libsoup: no redirects, no proxy, no cookies, no cache, no credentials.
#include "platform/linux/url_session.h"

#include <libsoup/soup.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <utility>

#include "platform/linux/engine_error.h"
#include "platform/linux/main_thread.h"
#include "platform/linux/object.h"
#include "platform/portable/address_text.h"

namespace vantorel::gtk {

namespace {

using Completion = std::function<void(const UrlResult&)>;

struct UriUnref {
    void operator()(GUri* uri) const { g_uri_unref(uri); }
};

/// A request for `address`, or none when it names no host or port that can be.
Object<SoupMessage> makeMessage(const std::string& address) {
    const std::unique_ptr<GUri, UriUnref> uri(
        g_uri_parse(address.c_str(), static_cast<GUriFlags>(SOUP_HTTP_URI_FLAGS), nullptr));
    const char* host = uri ? g_uri_get_host(uri.get()) : nullptr;
    if (host == nullptr || *host == '\0' || !isAddress(address)) {
        return {};
    }
    return Object<SoupMessage>::take(soup_message_new_from_uri(SOUP_METHOD_GET, uri.get()));
}

/// One request under way. It keeps itself alive until it has reported and the session has let go of it.
class Exchange : public std::enable_shared_from_this<Exchange> {
public:
    Exchange(Object<SoupSession> session, UrlRequest request, Completion completion)
        : session_(std::move(session)),
          request_(std::move(request)),
          completion_(std::move(completion)) {}

    void start() {
        auto* self = new std::shared_ptr<Exchange>(shared_from_this());
        // Seconds beyond what a timer holds are as good as no limit.
        const double milliseconds = std::clamp(std::floor(request_.timeoutSeconds * 1000), 0.0, 1e9);
        timer_ = SourceId(g_timeout_add_full(
            G_PRIORITY_HIGH, static_cast<guint>(milliseconds), [](gpointer data) { return held(data)->expire(); }, self,
            [](gpointer data) { delete static_cast<std::shared_ptr<Exchange>*>(data); }));

        const Object<SoupMessage> message = makeMessage(request_.address);
        if (!message) {
            reportLater(platformError("The address \"" + request_.address + "\" can't be used."));
            return;
        }
        soup_message_add_flags(message.get(), SOUP_MESSAGE_NO_REDIRECT);
        message_ = message;
        soup_session_send_async(session_.get(), message.get(), G_PRIORITY_DEFAULT, cancellable_.get(), answered,
                                keep());
    }

private:
    /// A reference for an asynchronous call, given back by `taken`.
    gpointer keep() { return new std::shared_ptr<Exchange>(shared_from_this()); }
    static std::shared_ptr<Exchange> taken(gpointer data) {
        const std::unique_ptr<std::shared_ptr<Exchange>> kept(static_cast<std::shared_ptr<Exchange>*>(data));
        return *kept;
    }
    static std::shared_ptr<Exchange> held(gpointer data) { return *static_cast<std::shared_ptr<Exchange>*>(data); }

    static void answered(GObject* /*source*/, GAsyncResult* result, gpointer data) {
        const std::shared_ptr<Exchange> self = taken(data);
        GError* error = nullptr;
        self->body_ = Object<GInputStream>::take(soup_session_send_finish(self->session_.get(), result, &error));
        self->proceed(GErrorPointer(error));
    }

    /// The task is over when its body is: the bytes are of no interest, their end is.
    static void readOn(GObject* source, GAsyncResult* result, gpointer data) {
        const std::shared_ptr<Exchange> self = taken(data);
        GError* error = nullptr;
        const gssize count = g_input_stream_read_finish(G_INPUT_STREAM(source), result, &error);
        if (count == 0) {
            self->bodyEnded();
        } else {
            self->received_ += count;
            self->proceed(GErrorPointer(error));
        }
    }

    void bodyEnded() {
        // libsoup 3.2 does not look at the announced length when the server had announced to close the connection.
        SoupMessageHeaders* headers = soup_message_get_response_headers(message_.get());
        const unsigned status = soup_message_get_status(message_.get());
        const bool hasBody = status != SOUP_STATUS_NO_CONTENT && status != SOUP_STATUS_NOT_MODIFIED;
        if (hasBody && soup_message_headers_get_encoding(headers) == SOUP_ENCODING_CONTENT_LENGTH &&
            received_ < soup_message_headers_get_content_length(headers)) {
            report({connectionLostError(), std::nullopt});
        } else {
            report({std::nullopt, static_cast<int>(status)});
        }
    }

    void proceed(GErrorPointer error) {
        if (error) {
            report({platformError(*error), std::nullopt});
        } else if (!reported_) {
            // A body without end must not keep the window from being drawn.
            g_input_stream_read_async(body_.get(), buffer_.data(), buffer_.size(), G_PRIORITY_LOW, cancellable_.get(),
                                      readOn, keep());
        }
    }

    gboolean expire() {
        timer_.forget();
        report({timedOutError(), std::nullopt});
        g_cancellable_cancel(cancellable_.get());
        return G_SOURCE_REMOVE;
    }

    void reportLater(PlatformError error) {
        struct Late {
            std::shared_ptr<Exchange> exchange;
            PlatformError error;
        };
        g_idle_add_full(
            G_PRIORITY_DEFAULT,
            [](gpointer data) -> gboolean {
                auto* late = static_cast<Late*>(data);
                late->exchange->report({late->error, std::nullopt});
                return G_SOURCE_REMOVE;
            },
            new Late{shared_from_this(), std::move(error)}, [](gpointer data) { delete static_cast<Late*>(data); });
    }

    void report(const UrlResult& result) {
        if (std::exchange(reported_, true)) {
            return;
        }
        const auto self = shared_from_this();
        timer_ = SourceId();
        if (const Completion completion = std::exchange(completion_, nullptr)) {
            guarded(completion, result);
        }
    }

    Object<SoupSession> session_;
    UrlRequest request_;
    Completion completion_;
    Object<GCancellable> cancellable_ = Object<GCancellable>::take(g_cancellable_new());
    Object<SoupMessage> message_;
    Object<GInputStream> body_;
    SourceId timer_;
    std::array<char, 65536> buffer_{};
    goffset received_ = 0;
    bool reported_ = false;
};

class SoupTask : public DataTask {
public:
    explicit SoupTask(std::shared_ptr<Exchange> exchange) : exchange_(std::move(exchange)) {}

    void resume() override {
        assertMainThread();
        if (const auto exchange = std::exchange(exchange_, nullptr)) {
            exchange->start();
        }
    }

private:
    std::shared_ptr<Exchange> exchange_;
};

class SoupUrlSession : public UrlSession {
public:
    SoupUrlSession() : session_(Object<SoupSession>::take(soup_session_new())) {
        // Without a resolver of its own the session would ask the desktop for a proxy.
        soup_session_set_proxy_resolver(session_.get(), nullptr);
        soup_session_remove_feature_by_type(session_.get(), SOUP_TYPE_AUTH_MANAGER);
        soup_session_remove_feature_by_type(session_.get(), SOUP_TYPE_CONTENT_DECODER);
    }
    SoupUrlSession(const SoupUrlSession&) = delete;
    SoupUrlSession& operator=(const SoupUrlSession&) = delete;
    ~SoupUrlSession() override { soup_session_abort(session_.get()); }

    std::shared_ptr<DataTask> dataTask(const UrlRequest& request, Completion completion) override {
        assertMainThread();
        return std::make_shared<SoupTask>(std::make_shared<Exchange>(session_, request, std::move(completion)));
    }

private:
    Object<SoupSession> session_;
};

} // namespace

std::unique_ptr<UrlSession> makeUrlSession() { return std::make_unique<SoupUrlSession>(); }

bool isAddress(const std::string& text) { return isLoadableAddress(text); }

} // namespace vantorel::gtk
