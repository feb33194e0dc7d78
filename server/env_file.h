// Vantorel. MIT licence, see LICENSE.
// The text of an .env file as entries.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vantorel {

/// The entries of `text` (valid UTF-8) in file order, duplicates included. Lines are trimmed of blanks; empty lines,
/// lines that begin with "#" and lines without "=" are left out. Key and value are what stands before and after the
/// first "=", verbatim: no second trimming, no quotes, no escapes.
std::vector<std::pair<std::string, std::string>> parseEnvText(std::string_view text);

} // namespace vantorel
