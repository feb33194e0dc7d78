// Vantorel. MIT licence, see LICENSE.
// Catches the diagnostic log, for a test to read, and puts its lines into the record of the fake platform.
#pragma once

#include <algorithm>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "app/log.h"
#include "tests/unit/fake/describe.h"
#include "tests/unit/fake/record.h"

namespace vantorel::fake {

/// While it lives, log lines come here instead of to standard output. Lines may come from any thread.
class LogCapture {
public:
    /// In `record` a log line is `log "TEXT"`.
    explicit LogCapture(Record& record) {
        setLogSink([this, &record](std::string_view line) {
            record.add("log " + quoted(line));
            const std::lock_guard lock(mutex_);
            lines_.emplace_back(line);
        });
    }
    ~LogCapture() { setLogSink({}); }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<std::string> lines() const {
        const std::lock_guard lock(mutex_);
        return lines_;
    }
    /// Gives the lines and forgets them.
    std::vector<std::string> take() {
        const std::lock_guard lock(mutex_);
        return std::exchange(lines_, {});
    }
    std::size_t count(std::string_view line) const {
        const std::lock_guard lock(mutex_);
        return static_cast<std::size_t>(std::count(lines_.begin(), lines_.end(), line));
    }

private:
    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
};

} // namespace vantorel::fake
