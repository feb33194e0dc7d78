// Vantorel. MIT licence, see LICENSE.
// One child by posix_spawn: exact environment, exact descriptors, clean signal state.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "platform/foundation.h"

namespace vantorel::gtk {

struct SpawnRequest {
    /// The program and its arguments, its own name included.
    std::string program;
    std::vector<std::string> arguments;
    /// The folder to start in; empty for the caller's.
    std::string folder;
    Environment environment;
    /// Descriptors of the caller for the child's 1 and 2; -1 hands on the caller's own.
    int standardOutput = -1;
    int standardError = -1;
    /// Descriptors of the caller that the child gets as 3, 4, … ; it gets no others.
    std::vector<int> handedOn;
};

struct SpawnResult {
    /// 0, or the errno value that says why there is no child.
    int errorCode = 0;
    pid_t pid = 0;
};

/// Starts a child in a process group of its own, with default signal dispositions, no blocked signals and /dev/null as
/// its standard input. Environment entries that the system cannot hold are left out. The caller reaps it.
SpawnResult spawn(const SpawnRequest& request);

} // namespace vantorel::gtk
