// Vantorel. MIT licence, see LICENSE.
// Background threads that take no signals.
#pragma once

#include <functional>
#include <thread>

namespace vantorel::gtk {

/// Runs `body` on a new thread with every signal blocked, so that signals for the process reach the main thread. `name`
/// shows in debuggers (15 bytes at most). The caller joins the thread or detaches it. Throws std::system_error when the
/// system has no thread left.
std::thread startThread(const char* name, std::function<void()> body);

} // namespace vantorel::gtk
