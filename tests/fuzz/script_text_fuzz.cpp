// Vantorel. MIT licence, see LICENSE.
// The cut that bounds a page's text, moved over every kind of character.
#include "platform/portable/script_value_limits.h"
#include "platform/portable/text.h"
#include "tests/fuzz/oracle.h"

#include <algorithm>

using namespace vantorel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view tail = fuzz::textFrom(data, size);
    if (size > 64 || !isValidUtf8(tail)) {
        return 0;
    }
    // The tail lies across the limit, the more of it beyond the longer it is.
    const std::string text = std::string(kMaxScriptTextBytes - size / 2, 'a') + std::string(tail);
    const std::string cut = cutScriptText(text);
    fuzz::check(text.compare(0, cut.size(), cut) == 0, "what is kept is the beginning");
    fuzz::check(cut.size() <= kMaxScriptTextBytes, "no more than the limit is kept");
    fuzz::check(cut.size() + 3 >= std::min(text.size(), kMaxScriptTextBytes), "no more than a character is given up");
    fuzz::check(isValidUtf8(std::string_view(cut).substr(kMaxScriptTextBytes - size / 2)),
                "the cut is at a character's end");
    return 0;
}
