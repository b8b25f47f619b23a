#include "Plugins/AsciiTcp/ForeignClient.h"

#include <gtest/gtest.h>

#include <string>

namespace AsciiTcp
{

TEST(ForeignClient, IsFoundByTheFirstLineOfAnHttpRequest)
{
    for (char const* line : {"GET / HTTP/1.1", "POST /START HTTP/1.1\r", "PRI * HTTP/2.0\r", "x HTTP/1", " HTTP/1.0",
                             "OPTIONS * HTTP/1.1 \t\r"})
    {
        EXPECT_TRUE(EndsInHttpVersion(line)) << line;
    }
    for (char const* line : {"", "GET zMax", "HTTP/1.1", "GET / HTTP/", "GET / http/1.1", "GET / HTTP/1.1x", "1.1",
                             "LOAD HTTP 1.1", "SERIAL 0 HTTP/1.1 x"})
    {
        EXPECT_FALSE(EndsInHttpVersion(line)) << line;
    }
}

TEST(ForeignClient, IsFoundByTheFieldWithTheHost)
{
    for (char const* line : {"Host: sensor", "host:sensor\r", "HOST:", " \tHost: a"})
    {
        EXPECT_TRUE(IsHostField(line)) << line;
    }
    for (char const* line : {"", "Host", "Host sensor", "GET Host: a", "Hosts: a", "LOAD host:"})
    {
        EXPECT_FALSE(IsHostField(line)) << line;
    }
}

TEST(ForeignClient, IsFoundByTheHelloOfTls)
{
    EXPECT_TRUE(IsTlsHello(std::string("\x16\x03\x01\x02\x00\x01", 6)));
    EXPECT_TRUE(IsTlsHello("\x16\x03"));
    EXPECT_FALSE(IsTlsHello("\x16"));
    EXPECT_FALSE(IsTlsHello("\x15\x03\x01"));
    EXPECT_FALSE(IsTlsHello("GET \x16\x03"));
}

} // namespace AsciiTcp
