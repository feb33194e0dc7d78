// Vantorel. MIT licence, see LICENSE.
// Modal loops: the application's events go on while one function waits for an answer. They nest like calls.
#pragma once

#include <gtk/gtk.h>

#include <memory>
#include <vector>

namespace vantorel::gtk {

/// What a modal loop gives when it ended without a button: the application is quitting, or the box was closed.
inline constexpr long kModalAborted = -1001;

class ModalLoop;

/// The modal loops that run at present. Belongs to the application.
class ModalStack {
public:
    bool empty() const { return running_.empty(); }
    /// The window of the innermost loop, or null.
    GtkWindow* topWindow() const;
    /// Ends all loops with kModalAborted, the inner ones first; loops to come end at once.
    void endAll();

private:
    friend class ModalLoop;

    std::vector<ModalLoop*> running_;
    bool ended_ = false;
};

class ModalLoop {
public:
    explicit ModalLoop(ModalStack& stack);
    ModalLoop(const ModalLoop&) = delete;
    ModalLoop& operator=(const ModalLoop&) = delete;

    /// Runs the main loop until `end` is called; returns its code. `window` is what is waited for.
    long run(GtkWindow* window);
    /// The first call counts. May come before `run`.
    void end(long code);

private:
    friend class ModalStack;

    struct Unref {
        void operator()(GMainLoop* loop) const { g_main_loop_unref(loop); }
    };

    ModalStack& stack_;
    std::unique_ptr<GMainLoop, Unref> loop_;
    GtkWindow* window_ = nullptr;
    long code_ = kModalAborted;
    bool ended_ = false;
};

} // namespace vantorel::gtk
