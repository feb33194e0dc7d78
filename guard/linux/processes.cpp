// Vantorel. MIT licence, see LICENSE.
// Processes on Linux: records from /proc, ends and signals through pidfds.
#include "guard/processes.h"

#include <algorithm>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <fstream>
#include <string>
#include <sys/syscall.h>
#include <unistd.h>

namespace vantorel::guard {

std::optional<ProcessRecord> processRecord(pid_t pid) {
    std::string text;
    std::getline(std::ifstream("/proc/" + std::to_string(pid) + "/stat"), text, '\0');
    // The program's name stands in parentheses and may hold any byte, parentheses too; the last one ends it.
    const std::size_t nameEnd = std::min(text.rfind(')'), text.size());
    ProcessRecord record{.pid = pid};
    char state = 0;
    unsigned long long birth = 0;
    if (std::sscanf(text.c_str() + nameEnd,
                    ") %c %d %d %d %*d %*d %*u %*u %*u %*u %*u %*u %*u %*d %*d %*d %*d %*d %*d %llu", &state,
                    &record.parent, &record.group, &record.session, &birth) != 5) {
        return std::nullopt;
    }
    record.birth = birth;
    record.ended = state == 'Z' || state == 'X';
    return record;
}

std::vector<ProcessRecord> livingMembers(pid_t group) {
    std::vector<ProcessRecord> members;
    DIR* const folder = ::opendir("/proc");
    while (const dirent* const entry = folder != nullptr ? ::readdir(folder) : nullptr) {
        pid_t pid = 0; // stays 0 for names that are no numbers
        std::from_chars(entry->d_name, entry->d_name + std::strlen(entry->d_name), pid);
        const std::optional<ProcessRecord> record = pid != 0 ? processRecord(pid) : std::nullopt;
        if (record && record->group == group && !record->ended) {
            members.push_back(*record);
        }
    }
    if (folder != nullptr) {
        ::closedir(folder);
    }
    return members;
}

int openExitDescriptor(const ProcessRecord& process) {
    return static_cast<int>(::syscall(SYS_pidfd_open, process.pid, 0)); // -1 before Linux 5.3
}

void sendSignal(const ProcessRecord& process, int exitDescriptor, int signal) {
    if (exitDescriptor != -1) {
        ::syscall(SYS_pidfd_send_signal, exitDescriptor, signal, nullptr, 0);
    } else if (isStill(process, processRecord(process.pid))) {
        ::kill(process.pid, signal);
    }
}

} // namespace vantorel::guard
