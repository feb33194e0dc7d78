// Vantorel. MIT licence, see LICENSE.
// Whether a text can be taken as the address of a page or a probe.
#include "platform/portable/address_text.h"

#include <algorithm>
#include <cstddef>

namespace vantorel {
namespace {

char lowerAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

/// Takes `scheme` off the front of `address`, whatever its case.
bool takeScheme(std::string_view& address, std::string_view scheme) {
    if (address.size() < scheme.size() ||
        !std::equal(scheme.begin(), scheme.end(), address.begin(),
                    [](char expected, char c) { return expected == lowerAscii(c); })) {
        return false;
    }
    address.remove_prefix(scheme.size());
    return true;
}

bool isInteger(std::string_view text) {
    if (!text.empty() && text.front() == '-') {
        text.remove_prefix(1);
    }
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

bool isHostName(std::string_view host) {
    if (host.size() > 2 && host.front() == '[' && host.back() == ']') { // an IPv6 address
        host = host.substr(1, host.size() - 2);
        return host.find_first_not_of("0123456789abcdefABCDEF:.") == std::string_view::npos;
    }
    return !host.empty() && std::all_of(host.begin(), host.end(), [](char c) {
        const char lower = lowerAscii(c);
        return (lower >= 'a' && lower <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '.' || c == '_';
    });
}

} // namespace

bool isLoadableAddress(std::string_view address) {
    if (!std::all_of(address.begin(), address.end(), [](char c) { return c > ' ' && c < '\x7F'; })) {
        return false;
    }
    if (!takeScheme(address, "http://") && !takeScheme(address, "https://")) {
        return false;
    }
    std::string_view authority = address.substr(0, address.find_first_of("/?#"));
    const std::size_t bracket = authority.find(']');
    const std::size_t colon = authority.find(':', bracket == std::string_view::npos ? 0 : bracket);
    if (colon == std::string_view::npos) {
        return isHostName(authority);
    }
    return isInteger(authority.substr(colon + 1)) && isHostName(authority.substr(0, colon));
}

} // namespace vantorel
