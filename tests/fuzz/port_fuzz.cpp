// Vantorel. MIT licence, see LICENSE.
// The port's text, the address made of it and the list of refused ports.
#include "app/port.h"

#include "platform/portable/address_text.h"
#include "platform/portable/blocked_ports.h"
#include "tests/fuzz/oracle.h"

#include <limits>

using namespace vantorel;

namespace {

/// Digit by digit, in a type with room to spare.
std::optional<std::int64_t> slowly(std::string_view text) {
    const bool isNegative = text.substr(0, 1) == "-";
    if (isNegative || text.substr(0, 1) == "+") {
        text.remove_prefix(1);
    }
    if (text.empty() || text.find_first_not_of("0123456789") != std::string_view::npos) {
        return std::nullopt;
    }
    long double value = 0; // exact to 64 bits, and beyond them still greater than any number that fits
    for (const char digit : text) {
        value = value * 10 + (digit - '0');
    }
    const long double largest = 9223372036854775807.0L;
    if (value > (isNegative ? largest + 1 : largest)) {
        return std::nullopt;
    }
    return static_cast<std::int64_t>(isNegative ? -value : value);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static_assert(std::numeric_limits<long double>::digits >= 64);
    const std::string_view text = fuzz::textFrom(data, size);
    const std::optional<std::int64_t> port = portFromText(text);
    fuzz::check(port == slowly(text), "both readers agree");
    // Any text may be asked about; only our own addresses must be taken.
    const bool isAddress = isLoadableAddress(text);
    fuzz::check(!isAddress || text.find_first_of(std::string_view(" \t\n\r\0", 5)) == std::string_view::npos,
                "no address has blanks");
    fuzz::check(!isAddress || text.size() > std::string_view("http://").size(), "an address has a host");
    if (port) {
        const std::string written = std::to_string(*port);
        fuzz::check(portFromText(written) == port, "a port written out is read back");
        fuzz::check(isLoadableAddress("http://localhost:" + written + "/"), "any port makes an address");
        fuzz::check(!isBlockedPort(*port) || (*port >= 0 && *port <= 65535), "what is refused is a port");
    }
    return 0;
}
