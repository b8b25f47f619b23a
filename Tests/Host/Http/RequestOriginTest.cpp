#include "Host/Http/RequestOrigin.h"

#include <gtest/gtest.h>

namespace ZuHost
{

TEST(RequestOrigin, KnowsTheNamesOfThisMachine)
{
    for (char const* const host : {"localhost", "LocalHost:8080", "127.0.0.1", "127.0.0.1:8080", "127.1.2.3:1", "[::1]",
                                   "[::1]:65535", "[0:0:0:0:0:0:0:1]"})
    {
        EXPECT_TRUE(RequestOrigin::IsThisMachine(host)) << host;
    }
}

TEST(RequestOrigin, TakesNoOtherNameForThisMachine)
{
    for (char const* const host : {"",
                                   "evil.example",
                                   "localhost.evil.example",
                                   "127.0.0.1.evil.example",
                                   "evil.example:8080",
                                   "0.0.0.0",
                                   "10.0.0.1",
                                   "[::]",
                                   "[::1",
                                   "::1",
                                   "localhost:",
                                   "localhost:x",
                                   "localhost:123456",
                                   "localhost:80:80",
                                   "[::1]80",
                                   "user@localhost",
                                   "localhost ",
                                   " localhost",
                                   "127.1",
                                   "2130706433",
                                   "0x7f000001",
                                   "[::2]"})
    {
        EXPECT_FALSE(RequestOrigin::IsThisMachine(host)) << host;
    }
}

TEST(RequestOrigin, IsItsOwnWhenSchemeNameAndPortAgree)
{
    EXPECT_TRUE(RequestOrigin::IsOwn("http://localhost:8080", "localhost:8080", false));
    EXPECT_TRUE(RequestOrigin::IsOwn("http://localhost:8080", "LOCALHOST:8080", false));
    for (char const* const origin : {"", "null", "https://localhost:8080", "http://localhost", "http://localhost:8081",
                                     "http://127.0.0.1:8080", "http://evil.example", "localhost:8080"})
    {
        EXPECT_FALSE(RequestOrigin::IsOwn(origin, "localhost:8080", false)) << origin;
    }
}

TEST(RequestOrigin, IsOfHttpsWhereTheConnectionIsEncrypted)
{
    EXPECT_TRUE(RequestOrigin::IsOwn("https://localhost:8443", "localhost:8443", true));
    EXPECT_FALSE(RequestOrigin::IsOwn("http://localhost:8443", "localhost:8443", true));
}

} // namespace ZuHost
