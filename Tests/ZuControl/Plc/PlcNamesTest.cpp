#include "ZuControl/Plc/PlcNames.h"

#include "ZuControl/Plc/ReservedWords.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <random>
#include <regex>
#include <set>

namespace ZuControl::Plc
{

namespace
{

PlcTag TagAt(uint16 address, std::string source, std::string field = "value", std::string type = "Measurement")
{
    PlcTag tag;
    tag.address = address;
    tag.blockAddress = address;
    tag.source = std::move(source);
    tag.blockType = std::move(type);
    tag.field.name = std::move(field);
    return tag;
}

std::vector<std::string> NamesOf(std::vector<PlcTag> tags, bool hasSeveralAssemblies = false)
{
    NameTags(tags, hasSeveralAssemblies);
    std::vector<std::string> names;
    for (PlcTag const& tag : tags)
    {
        names.push_back(tag.name);
    }
    return names;
}

std::string NameOf(std::string const& source, std::string const& field = "value")
{
    return NamesOf({TagAt(0, source, field)}).front();
}

using Names = std::vector<std::string>;

} // namespace

TEST(PlcNames, ConsistOfTheSourceAndTheField)
{
    EXPECT_EQ(NameOf("profile/zMax"), "profile_zMax_value");
    EXPECT_EQ(NameOf("a_b/c"), "a_b_c_value");
    EXPECT_EQ(NamesOf({TagAt(0, "", "upTime", "System")}), Names{"System_upTime"});
}

TEST(PlcNames, ConsistOfTheAssemblyTooWhereAServiceHasSeveral)
{
    PlcTag tag = TagAt(0, "zMax");
    tag.assembly = "left";
    EXPECT_EQ(NamesOf({tag}, true), Names{"left_zMax_value"});
    EXPECT_EQ(NamesOf({tag}, false), Names{"zMax_value"});
}

TEST(PlcNames, HaveAHashWhereTheSourceIsNotLegal)
{
    EXPECT_EQ(NameOf("Höhe/groß"), "Hoehe_gross_value_409294c5");
    EXPECT_EQ(NameOf("3d"), "n3d_value_4ee2b09f");
    EXPECT_EQ(NameOf("a//b"), "a_b_value_d2e06729");
    EXPECT_EQ(NameOf("\xF0\x9F\x98\x80"), "n_value_02fbeef4");
    EXPECT_EQ(NameOf("x\n\";$(id)"), "x_id_value_85b3ffe4");
}

TEST(PlcNames, OfMoreThan32CharactersAreCutAndGetAHash)
{
    EXPECT_EQ(NameOf("abcdefghijklmnopqrstuvwxyz"), "abcdefghijklmnopqrstuvwxyz_value");
    EXPECT_EQ(NameOf("abcdefghijklmnopqrstuvwxyz1"), "abcdefghijklmnopq_value_c6198a0f");
    EXPECT_EQ(NameOf("a", std::string(40, 'f')).size(), 27u);
}

TEST(PlcNames, DoNotDependOnOtherBlocks)
{
    std::vector<PlcTag> const few = {TagAt(0, "a"), TagAt(5, "lang und länger als erlaubt/c"), TagAt(9, "c")};
    Names const before = NamesOf(few);

    std::vector<PlcTag> more = few;
    more.insert(more.begin(), TagAt(0, "b"));
    more.insert(more.begin() + 2, TagAt(3, "lang und länger als erlaubt/d"));
    for (PlcTag& tag : more)
    {
        tag.address = static_cast<uint16>(tag.address + 100);
        tag.blockAddress = static_cast<uint16>(tag.blockAddress + 100);
    }
    Names const after = NamesOf(more);

    EXPECT_EQ((Names{after[1], after[3], after[4]}), before);
}

TEST(PlcNames, OfTheSameValueShownTwiceHaveTheAddressFromTheSecondOn)
{
    EXPECT_EQ(NamesOf({TagAt(10, "a"), TagAt(20, "a"), TagAt(300, "a")}),
              (Names{"a_value", "a_value_20", "a_value_300"}));
}

TEST(PlcNames, OfTwoSourcesThatDifferInCaseNeverChangeTheirMeaning)
{
    Names const names = NamesOf({TagAt(0, "zmax"), TagAt(3, "zMax"), TagAt(6, "a/b"), TagAt(9, "a_b")});

    EXPECT_EQ(names[0].find("zmax_value_"), 0u);
    EXPECT_EQ(names[1].find("zMax_value_"), 0u);
    EXPECT_EQ(names[2].find("a_b_value_"), 0u);
    EXPECT_EQ(names[3].find("a_b_value_"), 0u);
    EXPECT_EQ(std::set<std::string>(names.begin(), names.end()).size(), 4u);
}

TEST(PlcNames, AreUniqueAlsoForFieldsOfOneBlockWithOneName)
{
    Names const names = NamesOf({TagAt(0, "a"), TagAt(0, "a"), TagAt(0, "a")});
    EXPECT_EQ(std::set<std::string>(names.begin(), names.end()).size(), 3u);
}

TEST(PlcNames, AreNoReservedWords)
{
    EXPECT_TRUE(std::ranges::is_sorted(RESERVED_WORDS));
    EXPECT_TRUE(IsReservedWord("End_If"));
    EXPECT_TRUE(IsReservedWord("ARRAY"));
    EXPECT_FALSE(IsReservedWord("profile_zMax_value"));
    EXPECT_EQ(NameOf("CTU", "DINT").find("CTU_DINT_"), 0u);
    EXPECT_EQ(NameOf("day/of", "week").find("day_of_week_"), 0u);
}

TEST(PlcNames, AreLegalAndUniqueForAnySources)
{
    std::mt19937 draw(1);
    std::string const letters = "aAzZ09_/ -\xC3\xA4\"'$\n";
    std::regex const legal("[A-Za-z][A-Za-z0-9]*(_[A-Za-z0-9]+)*");
    std::vector<PlcTag> tags;
    for (uint16 address = 0; address < 10'000; ++address)
    {
        std::string source;
        for (auto length = draw() % 40; length > 0; --length)
        {
            source += letters[draw() % letters.size()];
        }
        tags.push_back(TagAt(address, source));
    }

    std::set<std::string> seen;
    for (std::string name : NamesOf(tags))
    {
        EXPECT_TRUE(std::regex_match(name, legal)) << name;
        EXPECT_LE(name.size(), MOST_CHARACTERS);
        std::ranges::transform(name, name.begin(), [](unsigned char c) { return std::tolower(c); });
        EXPECT_TRUE(seen.insert(name).second) << name;
    }
}

TEST(PlcNames, OfOtherThingsAreLegalToo)
{
    EXPECT_EQ(LegalName("ModbusTcp", 19), "ModbusTcp");
    EXPECT_EQ(LegalName("ModbusTcp", 9), "ModbusTcp");
    EXPECT_EQ(LegalName("array", 19), "array_a10ceeb7");
    EXPECT_EQ(LegalName("my service", 19), "my_service_1e14b5c2");
    EXPECT_EQ(LegalName("ABCDEFGHI_KLMNOPQRST", 19), "ABCDEFGHI_feb79167");
    EXPECT_EQ(LegalName("", 19), "n_00000000");
}

} // namespace ZuControl::Plc
