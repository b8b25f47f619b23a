#include "Ctl/Connection/Address.h"

#include "Ctl/Outcome/Failure.h"

#include <gtest/gtest.h>

namespace ZuCtl
{

TEST(Address, ReadsNamesAddressesAndPorts)
{
    struct Case
    {
        char const* text;
        Address address;
        char const* url;
    };
    Case const cases[] = {
        {"sensor", {false, "sensor", 8080}, "http://sensor:8080"},
        {"sensor:81", {false, "sensor", 81}, "http://sensor:81"},
        {"http://10.0.0.7", {false, "10.0.0.7", 8080}, "http://10.0.0.7:8080"},
        {"https://10.0.0.7", {true, "10.0.0.7", 8443}, "https://10.0.0.7:8443"},
        {"https://sensor-3.plant:443/", {true, "sensor-3.plant", 443}, "https://sensor-3.plant:443"},
        {"http://[::1]:8080", {false, "::1", 8080}, "http://[::1]:8080"},
        {"[fe80::1]", {false, "fe80::1", 8080}, "http://[fe80::1]:8080"},
    };
    for (Case const& one : cases)
    {
        EXPECT_EQ(Address::Parse(one.text), one.address) << one.text;
        EXPECT_EQ(Address::Parse(one.text).Url(), one.url);
    }
}

TEST(Address, RefusesWhatIsNoAddress)
{
    for (char const* const text : {"", "ftp://a", "http://", "a:0", "a:65536", "a:b", "http://a/b", "a b", "user@a",
                                   "[::1", "[::1]x", "[]", "http://a?b", "a\r\nb"})
    {
        try
        {
            Address::Parse(text);
            ADD_FAILURE() << text;
        }
        catch (Failure const& failure)
        {
            EXPECT_EQ(failure.Status(), ExitStatus::USAGE) << text;
            EXPECT_NE(std::string(failure.what()).find("is no address of a sensor"), std::string::npos);
        }
    }
}

TEST(Address, KnowsThisMachine)
{
    for (char const* const text : {"localhost", "127.0.0.1", "127.9.8.7:80", "https://[::1]"})
    {
        EXPECT_TRUE(Address::Parse(text).IsThisMachine()) << text;
    }
    for (char const* const text : {"10.0.0.7", "sensor", "127.evil.example", "128.0.0.1", "[::2]"})
    {
        EXPECT_FALSE(Address::Parse(text).IsThisMachine()) << text;
    }
}

TEST(Address, EscapesASegmentOfAPath)
{
    EXPECT_EQ(Escaped("line 7"), "line%207");
    EXPECT_EQ(Escaped("profile/zMax"), "profile%2FzMax");
    EXPECT_EQ(Escaped("a?b#c%d"), "a%3Fb%23c%25d");
    EXPECT_EQ(Escaped("\xC3\xA4-_.~9Z"), "%C3%A4-_.~9Z");
}

} // namespace ZuCtl
