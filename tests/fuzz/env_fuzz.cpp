// Vantorel. MIT licence, see LICENSE.
// The .env reader against a slow second one, and against its own output.
#include "server/env_file.h"

#include "platform/portable/text.h"
#include "tests/fuzz/oracle.h"

#include <utility>

using namespace vantorel;
using Entries = std::vector<std::pair<std::string, std::string>>;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = fuzz::textFrom(data, size);
    const std::optional<std::u32string> characters = fuzz::characters(text);
    fuzz::check(isValidUtf8(text) == characters.has_value(), "both validators agree");
    if (!characters) {
        return 0;
    }
    Entries wanted;
    for (const std::u32string& line : fuzz::lines(*characters)) {
        const std::u32string kept = fuzz::trimmed(line, fuzz::kBlanks);
        const std::size_t mark = kept.find(U'=');
        if (kept.substr(0, 1) != U"#" && mark != std::u32string::npos) {
            wanted.emplace_back(fuzz::spelled(kept.substr(0, mark)), fuzz::spelled(kept.substr(mark + 1)));
        }
    }
    const Entries entries = parseEnvText(text);
    fuzz::check(entries == wanted, "both readers agree");

    std::string written;
    for (const auto& [key, value] : entries) {
        fuzz::check(key.find('=') == std::string::npos, "a key has no =");
        written += key + "=" + value + "\n";
    }
    fuzz::check(parseEnvText(written) == entries, "entries written out are read back");
    return 0;
}
