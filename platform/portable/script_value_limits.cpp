// Vantorel. MIT licence, see LICENSE.
// How much of a page's value the backends take over.
#include "platform/portable/script_value_limits.h"

namespace vantorel {

namespace {

bool continuesCharacter(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

} // namespace

std::string cutScriptText(std::string text) {
    if (text.size() <= kMaxScriptTextBytes)
        return text;
    std::size_t end = kMaxScriptTextBytes;
    while (end > 0 && continuesCharacter(text[end]))
        --end;
    text.resize(end);
    return text;
}

} // namespace vantorel
