// Vantorel. MIT licence, see LICENSE.
// What the guard asks of the system about processes; one implementation for each system.
#pragma once

#include <cstdint>
#include <optional>
#include <sys/types.h>
#include <vector>

namespace vantorel::guard {

/// A process as the system knew it at one moment. Numbers come round again, but a number together with the time of
/// birth names one process for good.
struct ProcessRecord {
    pid_t pid = 0;
    pid_t parent = 0;
    pid_t group = 0;
    pid_t session = 0;
    std::uint64_t birth = 0; ///< in the system's own unit
    bool ended = false;      ///< over, and waiting for its parent to ask for its exit code
};

/// True when `now`, found under the same number later, is the process of `record`.
inline bool isStill(const ProcessRecord& record, const std::optional<ProcessRecord>& now) {
    return now && now->pid == record.pid && now->birth == record.birth;
}

/// The process of that number, or nothing when there is none.
std::optional<ProcessRecord> processRecord(pid_t pid);

/// The members of a process group that have not ended.
std::vector<ProcessRecord> livingMembers(pid_t group);

/// A new close-on-exec descriptor that polls readable once `process` has ended; -1 when the system has none to give.
int openExitDescriptor(const ProcessRecord& process);

/// Sends a signal to `process`, through its exit descriptor where the system can, so that no other process can get it.
void sendSignal(const ProcessRecord& process, int exitDescriptor, int signal);

} // namespace vantorel::guard
