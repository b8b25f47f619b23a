#include "Plugins/SparkplugMqtt/Topics.h"

#include <gtest/gtest.h>

#include <string>

namespace SparkplugMqtt
{

TEST(Topics, NameEachMessageOfNodeAndDevice)
{
    Topics const topics({"plant", "line1", "sensor"}, "scada");
    EXPECT_EQ(topics.nodeBirth, "spBv1.0/plant/NBIRTH/line1");
    EXPECT_EQ(topics.nodeDeath, "spBv1.0/plant/NDEATH/line1");
    EXPECT_EQ(topics.nodeCommand, "spBv1.0/plant/NCMD/line1");
    EXPECT_EQ(topics.deviceBirth, "spBv1.0/plant/DBIRTH/line1/sensor");
    EXPECT_EQ(topics.deviceData, "spBv1.0/plant/DDATA/line1/sensor");
    EXPECT_EQ(topics.deviceDeath, "spBv1.0/plant/DDEATH/line1/sensor");
    EXPECT_EQ(topics.deviceCommand, "spBv1.0/plant/DCMD/line1/sensor");
    EXPECT_EQ(topics.state, "spBv1.0/STATE/scada");
}

TEST(Topics, HaveNoStateWithoutAPrimaryHost)
{
    EXPECT_EQ(Topics({"plant", "line1", "sensor"}, "").state, "");
}

TEST(Topics, TakeIdsOfUtf8)
{
    for (std::string const id : {"a", "Line 1", "W\xC3\xA4lzer", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "a.b-c_d:e"})
    {
        EXPECT_TRUE(IsValidId(id)) << id;
    }
    EXPECT_TRUE(IsValidId(std::string(NodeIds::LONGEST_ID, 'x')));
}

TEST(Topics, RefuseReservedCharactersAndBytesThatAreNoText)
{
    std::string const wrong[] = {
        "",
        "a+b",
        "a#",
        "a/b",
        "a\nb",
        std::string("a\0b", 3),
        "a\x7F",
        std::string(NodeIds::LONGEST_ID + 1, 'x'),
        "\x80",             // a byte that continues nothing
        "\xC3",             // cut short
        "\xC3(",            // continued by a character
        "\xC0\xAF",         // overlong '/'
        "\xE0\x80\xAF",     // overlong '/'
        "\xED\xA0\x80",     // a surrogate
        "\xF4\x90\x80\x80", // beyond the largest number
        "\xF8\x88\x80\x80\x80",
        "\xFF",
    };
    for (std::string const& id : wrong)
    {
        EXPECT_FALSE(IsValidId(id)) << id;
    }
}

} // namespace SparkplugMqtt
