// Vantorel. MIT licence, see LICENSE.
// The diagnostic log: plain lines on standard output. Any thread; lines never interleave and keep the order of the
// calls.
#pragma once

#include <functional>
#include <string_view>

namespace vantorel {

/// Writes `text` and a line feed with one write. Never waits for the reader of standard output: what it does not take
/// at once is kept and written as soon as it does. A reader that went away or a full disk costs the lines, nothing
/// else.
void logLine(std::string_view text);

/// As logLine, for text of unbounded amount: while the reader lags behind by some megabytes the call waits for it. Not
/// for the main thread.
void logBulk(std::string_view text);

/// Waits until everything has been written, but no longer than `seconds`. For the end of the process.
void flushLog(double seconds);

/// Sends the lines (without line feed) to `sink` instead, on the calling thread; an empty function brings standard
/// output back. For tests.
void setLogSink(std::function<void(std::string_view)> sink);

} // namespace vantorel
