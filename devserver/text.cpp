// Vantorel. MIT licence, see LICENSE.
// Printable text, loopback hosts and loopback origins.
#include "devserver/text.h"

#include <algorithm>
#include <array>

namespace vantorel::devserver {
namespace {

constexpr std::string_view kHexDigits = "0123456789abcdef";

bool isContinuationByte(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

void appendEscaped(std::string& out, char byte) {
    switch (byte) {
    case '\n':
        out += "\\n";
        return;
    case '\r':
        out += "\\r";
        return;
    case '\t':
        out += "\\t";
        return;
    default:
        break;
    }
    const auto code = static_cast<unsigned char>(byte);
    if (code >= 0x20U && code != 0x7FU) {
        out += byte;
        return;
    }
    out += "\\x";
    out += kHexDigits[code >> 4U];
    out += kHexDigits[code & 0x0FU];
}

bool isPort(std::string_view text) {
    return !text.empty() && text.size() <= 5 &&
           std::all_of(text.begin(), text.end(), [](char digit) { return digit >= '0' && digit <= '9'; });
}

} // namespace

std::string asciiLower(std::string_view text) {
    std::string lower(text);
    for (char& byte : lower) {
        if (byte >= 'A' && byte <= 'Z')
            byte = static_cast<char>(byte - 'A' + 'a');
    }
    return lower;
}

std::string printable(std::string_view text) {
    std::string_view kept = text;
    if (kept.size() > kPrintedBytes) {
        std::size_t end = kPrintedBytes;
        while (end > 0 && isContinuationByte(text[end]))
            --end;
        kept = text.substr(0, end);
    }
    std::string out;
    out.reserve(kept.size());
    for (const char byte : kept)
        appendEscaped(out, byte);
    if (kept.size() < text.size())
        out += "… (" + std::to_string(text.size()) + " bytes)";
    return out;
}

bool isLoopbackHost(std::string_view host) {
    static constexpr std::array<std::string_view, 3> kNames = {"localhost", "127.0.0.1", "[::1]"};
    const std::string lower = asciiLower(host);
    return std::any_of(kNames.begin(), kNames.end(), [view = std::string_view(lower)](std::string_view name) {
        if (!view.starts_with(name))
            return false;
        const std::string_view rest = view.substr(name.size());
        return rest.empty() || (rest.front() == ':' && isPort(rest.substr(1)));
    });
}

bool isLoopbackOrigin(std::string_view origin) {
    static constexpr std::array<std::string_view, 2> kSchemes = {"http://", "https://"};
    const std::string lower = asciiLower(origin);
    return std::any_of(kSchemes.begin(), kSchemes.end(), [view = std::string_view(lower)](std::string_view scheme) {
        return view.starts_with(scheme) && isLoopbackHost(view.substr(scheme.size()));
    });
}

} // namespace vantorel::devserver
