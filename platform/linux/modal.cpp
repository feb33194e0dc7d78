// Vantorel. MIT licence, see LICENSE.
// Modal loops.
#include "platform/linux/modal.h"

#include <algorithm>

namespace vantorel::gtk {

GtkWindow* ModalStack::topWindow() const { return running_.empty() ? nullptr : running_.back()->window_; }

void ModalStack::endAll() {
    ended_ = true;
    // A loop that is told to end only returns once the loops inside it have.
    std::for_each(running_.rbegin(), running_.rend(), [](ModalLoop* loop) { loop->end(kModalAborted); });
}

ModalLoop::ModalLoop(ModalStack& stack) : stack_(stack), loop_(g_main_loop_new(nullptr, FALSE)) {}

long ModalLoop::run(GtkWindow* window) {
    if (stack_.ended_ || ended_)
        return code_;
    window_ = window;
    stack_.running_.push_back(this);
    g_main_loop_run(loop_.get());
    stack_.running_.pop_back();
    return code_;
}

void ModalLoop::end(long code) {
    if (ended_)
        return;
    ended_ = true;
    code_ = code;
    g_main_loop_quit(loop_.get());
}

} // namespace vantorel::gtk
