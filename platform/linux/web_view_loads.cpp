// Vantorel. MIT licence, see LICENSE.
// Loads of the web view: requests, the engine's events, time-outs, and what the delegate is told.
#include "platform/linux/c_text.h"
#include "platform/linux/engine_error.h"
#include "platform/linux/main_thread.h"
#include "platform/linux/page_completeness.h"
#include "platform/linux/queue.h"
#include "platform/linux/web_view.h"
#include "platform/portable/blocked_ports.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vantorel::gtk {

namespace {

/// What a request has by default, for loads that the page or the user start.
const double kDefaultTimeoutSeconds = UrlRequest().timeoutSeconds;

bool hasBlockedPort(const std::string& address) {
    GUri* uri = g_uri_parse(address.c_str(), G_URI_FLAGS_NONE, nullptr);
    if (uri == nullptr) {
        return false;
    }
    const int port = g_uri_get_port(uri);
    g_uri_unref(uri);
    return port >= 0 && isBlockedPort(port);
}

LoadFailure kindOf(const GError& error) {
    if (g_error_matches(&error, WEBKIT_POLICY_ERROR, WEBKIT_POLICY_ERROR_FRAME_LOAD_INTERRUPTED_BY_POLICY_CHANGE) !=
        0) {
        return LoadFailure::interrupted;
    }
    if (g_error_matches(&error, WEBKIT_NETWORK_ERROR, WEBKIT_NETWORK_ERROR_CANCELLED) != 0) {
        return LoadFailure::cancelled;
    }
    return LoadFailure::broken;
}

} // namespace

void GtkWebView::load(const UrlRequest& request) {
    assertMainThread();
    settleCheck();
    reportLater(tracker_.requested(request.address));
    const unsigned long number = ++loadNumber_;
    armClock(request.timeoutSeconds);
    if (hasBlockedPort(request.address)) {
        // WebKitGTK 2.50 would show an empty page and report success.
        webkit_web_view_stop_loading(view_.get());
        clock_ = SourceId();
        reportLater(tracker_.aborted(refusedError()));
        return;
    }
    if (request.cachePolicy != CachePolicy::reloadIgnoringLocalAndRemoteCacheData) {
        start(request);
        return;
    }
    // The engine has no such policy for one request: with "no-cache" alone it would still ask the server whether its
    // own copy is good enough. With no copy there is nothing to ask about.
    store_->removeData({WebsiteDataType::diskCache, WebsiteDataType::memoryCache}, {},
                       [weak = weak_from_this(), request, number] {
                           const auto self = weak.lock();
                           if (self && self->loadNumber_ == number && self->tracker_.waitsForAnswer()) {
                               self->start(request);
                           }
                       });
}

void GtkWebView::start(const UrlRequest& request) {
    const auto engineRequest = Object<WebKitURIRequest>::take(webkit_uri_request_new(request.address.c_str()));
    SoupMessageHeaders* headers = webkit_uri_request_get_http_headers(engineRequest.get());
    if (headers != nullptr && request.cachePolicy == CachePolicy::reloadIgnoringLocalAndRemoteCacheData) {
        soup_message_headers_replace(headers, "Cache-Control", "no-cache");
        soup_message_headers_replace(headers, "Pragma", "no-cache");
    }
    webkit_web_view_load_request(view_.get(), engineRequest.get());
}

void GtkWebView::reload() {
    assertMainThread();
    webkit_web_view_reload(view_.get());
}

void GtkWebView::loadChanged(WebKitLoadEvent event) {
    const auto self = shared_from_this();
    const std::string address = textOf(webkit_web_view_get_uri(view_.get()));
    switch (event) {
    case WEBKIT_LOAD_STARTED: {
        settleCheck();
        const bool ownLoad = tracker_.waitsForAnswer() && clock_;
        const LoadTracker::Ended ended = tracker_.started(address);
        if (ended || !ownLoad) {
            armClock(kDefaultTimeoutSeconds);
        }
        report(ended);
        break;
    }
    case WEBKIT_LOAD_REDIRECTED:
        break;
    case WEBKIT_LOAD_COMMITTED:
        tracker_.committed(address);
        core().showContentOnceChanged();
        break;
    case WEBKIT_LOAD_FINISHED:
        if (tracker_.arrives()) {
            checksPage_ = true;
            checkWhole(view_.get(), [weak = weak_from_this(), number = checkNumber_](bool whole) {
                const auto view = weak.lock();
                if (view && view->checkNumber_ == number) {
                    view->loadFinished(whole);
                }
            });
        }
        break;
    }
    if (!tracker_.waitsForAnswer()) {
        clock_ = SourceId();
    }
}

void GtkWebView::settleCheck() {
    if (checksPage_) {
        loadFinished(true);
    }
}

void GtkWebView::loadFinished(bool whole) {
    checksPage_ = false;
    ++checkNumber_;
    const LoadTracker::Ended ended =
        whole ? tracker_.finished() : tracker_.failed(LoadFailure::broken, connectionLostError());
    if (ended && ended->kind == LoadOutcome::Kind::finished) {
        revived_ = false;
    }
    report(ended);
}

void GtkWebView::decidePolicy(WebKitPolicyDecision* decision) {
    if (webkit_response_policy_decision_is_main_frame_main_resource(WEBKIT_RESPONSE_POLICY_DECISION(decision)) != 0) {
        tracker_.answered();
        if (!tracker_.waitsForAnswer()) {
            clock_ = SourceId();
        }
    }
}

void GtkWebView::loadFailed(const GError& error) {
    const auto self = shared_from_this();
    const LoadTracker::Ended ended = tracker_.failed(kindOf(error), platformError(error));
    if (ended) {
        clock_ = SourceId();
    }
    report(ended);
}

void GtkWebView::processGone() {
    const auto self = shared_from_this();
    hideUntilDrawn();
    clock_ = SourceId();
    settleCheck();
    const LoadTracker::Ended ended = tracker_.aborted(pageProcessGoneError());
    report(ended);
    // A reload of a view without a process might come from the cache (WebKitGTK 2.50); a load never does.
    WebKitBackForwardListItem* page =
        webkit_back_forward_list_get_current_item(webkit_web_view_get_back_forward_list(view_.get()));
    // The delegate may have asked for a page of its own.
    if (page == nullptr || tracker_.waitsForAnswer() || std::exchange(revived_, true)) {
        return;
    }
    UrlRequest request;
    request.address = textOf(webkit_back_forward_list_item_get_uri(page));
    request.cachePolicy = CachePolicy::reloadIgnoringLocalAndRemoteCacheData;
    load(request);
}

void GtkWebView::armClock(double seconds) {
    const double milliseconds = std::clamp(std::ceil(seconds * 1000), 0.0, 1e9);
    clock_ = SourceId(g_timeout_add(
        static_cast<guint>(milliseconds),
        [](gpointer data) -> gboolean {
            const auto self = static_cast<GtkWebView*>(data)->shared_from_this();
            self->clock_.forget();
            const LoadTracker::Ended ended = self->tracker_.aborted(timedOutError());
            webkit_web_view_stop_loading(self->view_.get());
            self->report(ended);
            return G_SOURCE_REMOVE;
        },
        this));
}

void GtkWebView::report(const LoadTracker::Ended& ended) {
    const auto delegate = navigationDelegate_.lock();
    if (!ended || !delegate) {
        return;
    }
    switch (ended->kind) {
    case LoadOutcome::Kind::finished:
        delegate->didFinishNavigation(*this);
        break;
    case LoadOutcome::Kind::failed:
        delegate->didFailNavigation(*this, *ended->error);
        break;
    case LoadOutcome::Kind::failedProvisionally:
        delegate->didFailProvisionalNavigation(*this, *ended->error);
        break;
    }
}

void GtkWebView::reportLater(const LoadTracker::Ended& ended) {
    if (ended) {
        mainQueue().async([weak = weak_from_this(), ended] {
            if (const auto self = weak.lock()) {
                self->report(ended);
            }
        });
    }
}

} // namespace vantorel::gtk
