#include "Plugins/SparkplugMqtt/HostState.h"

#include <gtest/gtest.h>

#include <string>

namespace SparkplugMqtt
{

TEST(HostState, IsReadFromItsObject)
{
    EXPECT_EQ(ReadHostState(R"({"online":true,"timestamp":1668114759262})"), (HostState{true, 1668114759262}));
    EXPECT_EQ(ReadHostState(R"({"timestamp":0,"online":false,"more":[1]})"), (HostState{false, 0}));
}

TEST(HostState, IsAbsentInOtherTexts)
{
    std::string const wrong[] = {
        "",
        "ONLINE",
        "[]",
        "true",
        R"({"online":true})",
        R"({"timestamp":5})",
        R"({"online":"true","timestamp":5})",
        R"({"online":true,"timestamp":"5"})",
        R"({"online":true,"timestamp":-5})",
        R"({"online":true,"timestamp":1.5})",
        R"({"online":true,"timestamp":5)",
        std::string(700, '[') + std::string(700, ']'),
        R"({"online":true,"timestamp":5,"x":")" + std::string(1024, 'x') + R"("})",
    };
    for (std::string const& text : wrong)
    {
        EXPECT_EQ(ReadHostState(text), std::nullopt) << text;
    }
}

} // namespace SparkplugMqtt
