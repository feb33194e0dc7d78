// Vantorel. MIT licence, see LICENSE.
// The shell's end of the line to vantorel-guard, which ends the server when the shell is gone.
#pragma once

#include <sys/types.h>

namespace vantorel::mac {

/// Owns the writing end of the guard's pipe: the guard takes its closing, by whatever end of this process, for the sign
/// that the shell is gone. Main thread. Every failure leaves the server unguarded and is no failure of the shell.
class GuardLink {
public:
    GuardLink() = default;
    GuardLink(const GuardLink&) = delete;
    GuardLink& operator=(const GuardLink&) = delete;
    ~GuardLink();

    /// Starts the guard over `server`, a child of this process that has not been waited for.
    void start(pid_t server);
    /// The server has been asked to stop: the guard need not ask again, only see that it ends.
    void tellNormalQuit();

private:
    int pipe_ = -1;
};

}  // namespace vantorel::mac
