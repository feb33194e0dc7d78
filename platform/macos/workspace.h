// Vantorel. MIT licence, see LICENSE.
// The user's desktop over NSWorkspace.
#pragma once

#include <memory>
#include <string>

#include "platform/appkit.h"

namespace vantorel::mac {

std::unique_ptr<Workspace> makeWorkspace();

/// Whether NSURL can be formed from `text`.
bool isAddress(const std::string& text);

}  // namespace vantorel::mac
