// Vantorel. MIT licence, see LICENSE.
// Starting the server under the watch of the helper program that ends it when the shell is gone.
#pragma once

#include <sys/types.h>

#include <string>

#include "platform/linux/file_descriptor.h"
#include "platform/linux/spawn.h"

namespace vantorel::gtk {

struct Launched {
    /// 0, or the errno value that says why the server does not run.
    int errorCode = 0;
    pid_t pid = 0;
    /// The line to the guard; none when the server runs without one. While it is open the guard takes the shell as
    /// alive.
    FileDescriptor guardLine;
};

/// Starts `server` so that no moment of it is unwatched by a guard, the program at `guardProgram`. A guard that is
/// missing or fails leaves the server without one. Returns when the server runs or could not be started; the caller
/// reaps it.
Launched launchGuarded(const SpawnRequest& server, const std::string& guardProgram);

/// Tells the guard that what follows is a normal quit with a termination request of the shell's own.
void announceQuit(const FileDescriptor& guardLine);

} // namespace vantorel::gtk
