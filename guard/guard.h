// Vantorel. MIT licence, see LICENSE.
// The helper program that ends the server when the shell has ended in any way, killed or crashed included.
#pragma once

#include <chrono>
#include <sys/types.h>

// How the shell uses it
// ---------------------
// The helper has two uses, and a careful start needs both, in this order:
//
// 1. The shell makes two pipes, the gate and the status, and starts `vantorel-guard --launch GATE_FD STATUS_FD SERVER`
//    in place of the server: with the server's streams, working directory and environment, default signals, and in a
//    process group of its own. That process waits at the gate: it cannot end, so its number cannot pass to another.
// 2. The shell makes a third pipe, starts `vantorel-guard --watch PIPE_FD PID GRACE_MS` with the number of the waiting
//    process, closes its own copy of the reading end and waits for the started process, which is over within
//    milliseconds: exit code 0 says that a background process of its own session now stands guard. Any other ending
//    means that the shell goes on without a guard.
// 3. The shell writes one byte to the gate. The waiting process becomes the server, with the same number, no arguments
//    and its own path as name. The shell reads the status pipe: end-of-file is success, four bytes are the errno of a
//    failed execve. When the gate is closed without a byte, because the shell is gone, the process exits with 127.
//
// A server that was started directly can be watched too; then only the time between its start and step 2 is uncovered.
//
// All pipe ends must be close-on-exec, but for those named on a command line in that one program. The writing end of
// the watch pipe must be in the shell alone. The shell must ignore SIGPIPE: a guard that is done has closed its end.
//
// What the guard does
// -------------------
// It ends, without a word, as soon as the server and all of its process group are gone. A byte "q" on the pipe tells
// it of a normal quit, in which the shell sends the termination request; end-of-file without it tells that the shell
// is gone, and then the guard sends SIGTERM to the server, once. GRACE_MS after either it kills the server and what is
// left of the server's process group. Children of the server that left the group are not touched.

namespace vantorel::guard {

/// Waits for a byte on `gate`, then turns the process into the program at `serverPath`. Returns the exit code when that
/// does not come to pass; an execve that fails writes its errno to `status` first.
int launch(int gate, int status, const char* serverPath);

/// Starts the background guard for `server`, a child of the calling process's own parent, told by `pipe` about the end
/// of the shell. Returns the caller's exit code; in the background process it returns when all is over.
int watch(int pipe, pid_t server, std::chrono::milliseconds grace);

} // namespace vantorel::guard
