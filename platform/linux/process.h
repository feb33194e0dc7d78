// Vantorel. MIT licence, see LICENSE.
// The child process: launch, termination request, exit.
#pragma once

#include <memory>
#include <string>

#include "platform/foundation.h"

namespace vantorel::gtk {

/// A process whose launch brings the guard that lies beside the running executable.
std::shared_ptr<Process> makeProcess();

/// The same with the guard at `guardProgram`; a path where nothing is makes the child run without a guard.
std::shared_ptr<Process> makeProcess(const std::string& guardProgram);

} // namespace vantorel::gtk
