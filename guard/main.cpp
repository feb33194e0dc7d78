// Vantorel. MIT licence, see LICENSE.
// Command line of `vantorel-guard`, which the shell starts; see guard.h.
#include "guard/guard.h"
#include "platform/portable/guard_protocol.h"

#include <charconv>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>

namespace {

/// The number that `text` spells, or -1.
int numberFrom(std::string_view text) {
    int number = -1;
    const char* const end = text.data() + text.size();
    return std::from_chars(text.data(), end, number).ptr == end && number >= 0 ? number : -1;
}

/// The pipe end (or socket) of that number, or -1 when it is none or one for the other direction.
int pipeFrom(std::string_view text, int wrongMode) {
    struct stat status {};
    const int pipe = numberFrom(text);
    const bool isPipe = ::fstat(pipe, &status) == 0 && (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode));
    return isPipe && (::fcntl(pipe, F_GETFL) & O_ACCMODE) != wrongMode ? pipe : -1;
}

} // namespace

int main(int count, char** arguments) {
    using namespace vantorel;
    if (count != 5) {
        return kGuardExitBadArguments;
    }
    const std::string_view use(arguments[1]);
    const int pipe = pipeFrom(arguments[2], O_WRONLY);
    if (const int status = pipeFrom(arguments[3], O_RDONLY);
        use == kGuardLaunchOption && pipe != -1 && status != -1 && *arguments[4] != '\0') {
        return guard::launch(pipe, status, arguments[4]);
    }
    // The processes 0 and 1 are nobody's children.
    if (const int server = numberFrom(arguments[3]), grace = numberFrom(arguments[4]);
        use == kGuardWatchOption && pipe != -1 && server > 1 && grace != -1) {
        return guard::watch(pipe, server, std::chrono::milliseconds(grace));
    }
    return kGuardExitBadArguments;
}
