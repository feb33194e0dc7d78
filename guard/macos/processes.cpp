// Vantorel. MIT licence, see LICENSE.
// Processes on macOS: records from the kernel's process table, ends through a kqueue.
#include "guard/processes.h"

#include <csignal>
#include <cstddef>
#include <fcntl.h>
#include <sys/event.h>
#include <sys/proc.h>
#include <sys/sysctl.h>
#include <unistd.h>

namespace vantorel::guard {
namespace {

constexpr std::uint64_t kMicrosecondsPerSecond = 1'000'000;

/// The kernel's entries for one process or one group.
std::vector<kinfo_proc> processTable(int kind, pid_t number) {
    int name[] = {CTL_KERN, KERN_PROC, kind, number};
    std::size_t size = 0;
    if (::sysctl(name, 4, nullptr, &size, nullptr, 0) != 0) {
        return {};
    }
    std::vector<kinfo_proc> entries(size / sizeof(kinfo_proc) + 8); // more may be born between the two calls
    size = entries.size() * sizeof(kinfo_proc);
    const bool succeeded = ::sysctl(name, 4, entries.data(), &size, nullptr, 0) == 0;
    entries.resize(succeeded ? size / sizeof(kinfo_proc) : 0);
    return entries;
}

ProcessRecord recordFrom(const kinfo_proc& entry) {
    const timeval& start = entry.kp_proc.p_starttime;
    return ProcessRecord{.pid = entry.kp_proc.p_pid,
                         .parent = entry.kp_eproc.e_ppid,
                         .group = entry.kp_eproc.e_pgid,
                         .session = ::getsid(entry.kp_proc.p_pid),
                         .birth = static_cast<std::uint64_t>(start.tv_sec) * kMicrosecondsPerSecond +
                                  static_cast<std::uint64_t>(start.tv_usec),
                         .ended = entry.kp_proc.p_stat == SZOMB};
}

} // namespace

std::optional<ProcessRecord> processRecord(pid_t pid) {
    const std::vector<kinfo_proc> entries = processTable(KERN_PROC_PID, pid);
    return entries.empty() ? std::nullopt : std::optional(recordFrom(entries.front()));
}

std::vector<ProcessRecord> livingMembers(pid_t group) {
    std::vector<ProcessRecord> members;
    for (const kinfo_proc& entry : processTable(KERN_PROC_PGRP, group)) {
        if (const ProcessRecord record = recordFrom(entry); record.group == group && !record.ended) {
            members.push_back(record);
        }
    }
    return members;
}

int openExitDescriptor(const ProcessRecord& process) {
    const int queue = ::kqueue();
    struct kevent change = {};
    EV_SET(&change, static_cast<uintptr_t>(process.pid), EVFILT_PROC, EV_ADD, NOTE_EXIT, 0, nullptr);
    if (queue == -1 || ::fcntl(queue, F_SETFD, FD_CLOEXEC) == -1 ||
        ::kevent(queue, &change, 1, nullptr, 0, nullptr) == -1) {
        ::close(queue);
        return -1;
    }
    return queue;
}

void sendSignal(const ProcessRecord& process, int /*exitDescriptor*/, int signal) {
    // No signals through kqueues: between the look and the signal lie microseconds, and a number comes round only after
    // all others have been used.
    if (isStill(process, processRecord(process.pid))) {
        ::kill(process.pid, signal);
    }
}

} // namespace vantorel::guard
