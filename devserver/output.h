// Vantorel. MIT licence, see LICENSE.
// Lines on standard output and standard error that arrive at once and whole.
#pragma once

#include <string_view>

namespace vantorel::devserver {

/// Ignores SIGPIPE, so that a reader that goes away turns writes into errors. Call once, before anything is printed.
void survivePipeLoss();

/// Writes `line` and a line feed to standard output, unbuffered. What can't be written (reader gone, disk full) is lost
/// without a word: the server serves on. Main thread.
void printLine(std::string_view line);

/// The same on standard error, with the program's name in front.
void printError(std::string_view line);

} // namespace vantorel::devserver
