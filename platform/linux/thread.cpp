// Vantorel. MIT licence, see LICENSE.
// Background threads that take no signals.

#include "platform/linux/thread.h"

#include <pthread.h>

#include <csignal>
#include <utility>

namespace vantorel::gtk {

namespace {

// Blocks every signal for the calling thread, and thereby for a thread that it starts, as long as it lives.
class BlockedSignals {
public:
    BlockedSignals() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~BlockedSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    BlockedSignals(const BlockedSignals&) = delete;
    BlockedSignals& operator=(const BlockedSignals&) = delete;

private:
    sigset_t before_{};
};

} // namespace

std::thread startThread(const char* name, std::function<void()> body) {
    const BlockedSignals blocked;
    return std::thread([name, body = std::move(body)] {
        pthread_setname_np(pthread_self(), name);
        body();
    });
}

} // namespace vantorel::gtk
