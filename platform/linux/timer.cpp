// Vantorel. MIT licence, see LICENSE.
// Repeating timers of the main loop.

#include "platform/linux/timer.h"

#include <glib.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/linux/main_thread.h"
#include "platform/linux/object.h"

namespace vantorel::gtk {

namespace {

// GLib's own time-outs start anew after each firing, so that delays would add up.
struct GridSource {
    GSource source;
    gint64 interval;
    gint64 due;
};

gboolean dispatchGrid(GSource* source, GSourceFunc callback, gpointer data) {
    auto* grid = reinterpret_cast<GridSource*>(source);
    const gint64 missed = std::max<gint64>(0, (g_get_monotonic_time() - grid->due) / grid->interval);
    grid->due += (missed + 1) * grid->interval;
    g_source_set_ready_time(source, grid->due);
    callback(data);
    return G_SOURCE_CONTINUE;
}

GSourceFuncs gridFunctions{nullptr, nullptr, dispatchGrid, nullptr, nullptr, nullptr};

gint64 wholeMicroseconds(double seconds) {
    constexpr double kLeast = 1e3;
    constexpr double kMost = 1e15;
    const double microseconds = std::round(seconds * 1e6);
    return microseconds > kLeast ? static_cast<gint64>(std::min(microseconds, kMost)) : static_cast<gint64>(kLeast);
}

class GridTimer : public Timer {
public:
    GridTimer(double seconds, std::function<void()> block) : source_(g_source_new(&gridFunctions, sizeof(GridSource))) {
        auto* grid = reinterpret_cast<GridSource*>(source_);
        grid->interval = wholeMicroseconds(seconds);
        grid->due = g_get_monotonic_time() + grid->interval;
        g_source_set_ready_time(source_, grid->due);
        g_source_set_callback(
            source_,
            [](gpointer data) -> gboolean {
                guarded(*static_cast<std::function<void()>*>(data));
                return G_SOURCE_CONTINUE;
            },
            new std::function<void()>(std::move(block)),
            [](gpointer data) { delete static_cast<std::function<void()>*>(data); });
        g_source_attach(source_, nullptr);
    }
    ~GridTimer() override { g_source_unref(source_); }
    GridTimer(const GridTimer&) = delete;
    GridTimer& operator=(const GridTimer&) = delete;

    void invalidate() override {
        assertMainThread();
        g_source_destroy(source_);
    }

private:
    GSource* source_;
};

} // namespace

std::shared_ptr<Timer> scheduleRepeatingTimer(double seconds, std::function<void()> block) {
    assertMainThread();
    return std::make_shared<GridTimer>(seconds, std::move(block));
}

} // namespace vantorel::gtk
