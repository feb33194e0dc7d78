// Vantorel. MIT licence, see LICENSE.
// The numbered record of what was asked of the fake platform, in one order for all of its objects and the log.
#pragma once

#include <cstddef>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace vantorel::fake {

/// Readable lines in the order in which they were added. Any thread.
class Record {
public:
    /// The calling thread becomes the main thread.
    Record();

    /// Notes a call that any thread may make.
    void add(std::string line);
    /// Notes a call that only the main thread may make; from any other thread it is a violation as well.
    void addOnMain(std::string line);
    /// Notes a violation unless the calling thread is the main one.
    void checkMainThread(const std::string& call);
    /// Notes that a promise of the seam was broken by the caller.
    void addViolation(std::string what);

    bool onMainThread() const { return std::this_thread::get_id() == mainThread_; }
    std::vector<std::string> lines() const;
    /// How many lines are exactly `line`.
    std::size_t count(std::string_view line) const;
    /// How many lines begin with `start`.
    std::size_t countStartingWith(std::string_view start) const;
    /// The number (from 1) of the first line that is exactly `line`; 0 when there is none.
    std::size_t numberOf(std::string_view line) const;
    std::vector<std::string> violations() const;
    /// Forgets the lines; numbers begin at 1 again. Violations stay.
    void clear();

private:
    const std::thread::id mainThread_;
    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
    std::vector<std::string> violations_;
};

/// Runs `work` on a thread of its own and waits for its end: how the fake makes calls that come off the main thread.
void onBackgroundThread(const std::function<void()>& work);

} // namespace vantorel::fake
