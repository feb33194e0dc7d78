// Vantorel. MIT licence, see LICENSE.
// What the shell and the helper program `vantorel-guard` say to each other; guard/guard.h tells the whole story.
#pragma once

#include <string_view>

namespace vantorel {

/// The helper's file name; it lies beside the shell's own executable.
inline constexpr std::string_view kGuardProgramName = "vantorel-guard";

/// `vantorel-guard --launch GATE_FD STATUS_FD SERVER_PATH`: waits for one byte on GATE_FD, then becomes the server.
inline constexpr std::string_view kGuardLaunchOption = "--launch";

/// `vantorel-guard --watch PIPE_FD SERVER_PID GRACE_MS`: exits with 0 once its background part stands.
inline constexpr std::string_view kGuardWatchOption = "--watch";

/// Written to the watch pipe at a normal quit, right before the termination request is sent.
inline constexpr char kGuardQuitByte = 'q';

/// How long a server may take to end before it is killed.
inline constexpr int kGuardGraceMilliseconds = 10'000;

/// Exit codes of the helper itself; a watch that reports anything but `kGuardExitOk` does not stand.
inline constexpr int kGuardExitOk = 0;
inline constexpr int kGuardExitFailed = 1;
inline constexpr int kGuardExitBadArguments = 2;
inline constexpr int kGuardExitNotOurs = 3;
inline constexpr int kGuardExitNotLaunched = 127;

} // namespace vantorel
