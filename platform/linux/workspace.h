// Vantorel. MIT licence, see LICENSE.
// The user's desktop: addresses are handed to the handlers that are chosen there.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/appkit.h"

namespace vantorel::gtk {

/// `unwanted` are the variables that the shell set for itself and that a program it opens must not get.
std::unique_ptr<Workspace> makeWorkspace(std::vector<std::string> unwanted);

} // namespace vantorel::gtk
