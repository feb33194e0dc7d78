// Vantorel. MIT licence, see LICENSE.
// The text of an .env file as entries.
#include "server/env_file.h"

#include <algorithm>

#include "platform/portable/text.h"

namespace vantorel {

std::vector<std::pair<std::string, std::string>> parseEnvText(std::string_view text) {
    std::vector<std::pair<std::string, std::string>> entries;
    entries.reserve(static_cast<std::size_t>(std::count(text.begin(), text.end(), '=')));
    for (const std::string_view untrimmed : splitLines(text)) {
        const std::string_view line = trimWhitespace(untrimmed);
        if (line.empty() || line.starts_with('#'))
            continue;
        const std::size_t equals = line.find('=');
        if (equals == std::string_view::npos)
            continue;
        entries.emplace_back(line.substr(0, equals), line.substr(equals + 1));
    }
    return entries;
}

} // namespace vantorel
