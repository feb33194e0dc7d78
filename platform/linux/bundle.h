// Vantorel. MIT licence, see LICENSE.
// Where the application's bundle is.
#pragma once

#include <memory>
#include <string>

#include "platform/foundation.h"

namespace vantorel::gtk {

/// The bundle of the executable at the absolute path `executable`: X.app for X.app/Contents/Linux/NAME, else the
/// executable's folder. No "/" at the end.
std::string bundlePathOf(const std::string& executable);

/// The absolute path of the running executable; empty when the system does not tell.
std::string executablePath();

std::unique_ptr<Bundle> makeBundle();

} // namespace vantorel::gtk
