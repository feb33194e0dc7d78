// Vantorel. MIT licence, see LICENSE.
// Which texts count as addresses, and which ports an engine refuses.
#include "platform/portable/address_text.h"
#include "platform/portable/blocked_ports.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace vantorel {
namespace {

TEST(LoadableAddress, TakesThePageAndTheProbeAtAnyPort) {
    for (const std::int64_t port :
         {std::int64_t{8080}, std::int64_t{0}, std::int64_t{-1}, std::int64_t{70000},
          std::numeric_limits<std::int64_t>::max(), std::numeric_limits<std::int64_t>::min()}) {
        const std::string address = "http://localhost:" + std::to_string(port);
        EXPECT_TRUE(isLoadableAddress(address)) << address;
        EXPECT_TRUE(isLoadableAddress(address + "/")) << address;
    }
}

TEST(LoadableAddress, TakesOtherHostsPathsAndSchemes) {
    for (const char* address :
         {"http://localhost", "https://example.org/", "HTTP://LOCALHOST:8080/", "http://127.0.0.1:1/",
          "http://[::1]:8080/", "http://[::1]", "http://localhost:8080?a=b", "http://a-b.c_d/e#f:g"}) {
        EXPECT_TRUE(isLoadableAddress(address)) << address;
    }
}

TEST(LoadableAddress, RefusesEverythingElse) {
    for (const char* address : {"",
                                "localhost:8080",
                                "http:",
                                "http:/localhost",
                                "http://",
                                "http:///",
                                "http://:8080/",
                                "http://localhost:/",
                                "http://localhost:80a/",
                                "http://localhost:+80/",
                                "http://localhost:-/",
                                "http://localhost:--1/",
                                "http://local host/",
                                "http://localhost:8080/ ",
                                " http://localhost:8080/",
                                "http://localhost:8080/\n",
                                "http://localhost:80:80/",
                                "ftp://localhost/",
                                "file:///etc/passwd",
                                "javascript:alert(1)",
                                "http://user@localhost/",
                                "http://[::1",
                                "http://[]/",
                                "http://[g]/",
                                "http://[::1]8080/",
                                "http://é/",
                                "http://localhost\\/"}) {
        EXPECT_FALSE(isLoadableAddress(address)) << address;
    }
    EXPECT_FALSE(isLoadableAddress(std::string_view("http://localhost\0:8080/", 23)));
}

TEST(BlockedPort, HoldsTheStandardsList) {
    for (const std::int64_t port :
         {0,    1,    7,    21,   22,   25,   53,   110,  143,  389,  427,  554,  995,  1719,
          1723, 2049, 3659, 4045, 4190, 5060, 5061, 6000, 6566, 6665, 6669, 6679, 6697, 10080}) {
        EXPECT_TRUE(isBlockedPort(port)) << port;
    }
}

TEST(BlockedPort, LeavesTheOthersAlone) {
    for (const std::int64_t port :
         {2, 80, 443, 3000, 5000, 5999, 6001, 6664, 6670, 8000, 8080, 8443, 9000, 10079, 10081, 65535}) {
        EXPECT_FALSE(isBlockedPort(port)) << port;
    }
}

TEST(BlockedPort, KnowsNoPortsOutsideTheirRange) {
    EXPECT_FALSE(isBlockedPort(-1));
    EXPECT_FALSE(isBlockedPort(65536 + 6000));
    EXPECT_FALSE(isBlockedPort(std::numeric_limits<std::int64_t>::max()));
    EXPECT_FALSE(isBlockedPort(std::numeric_limits<std::int64_t>::min()));
}

TEST(BlockedPort, CountsEightyThreeOfThem) {
    int count = 0;
    for (std::int64_t port = 0; port <= 65535; ++port) {
        count += isBlockedPort(port) ? 1 : 0;
    }
    EXPECT_EQ(count, 83);
}

} // namespace
} // namespace vantorel
