#include "ZuRest/EntityTag.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace ZuRest
{

TEST(EntityTag, TellsEveryTextFromEveryOther)
{
    std::string const document = R"({"enabled":true,"parameters":{"maxClients":16,"port":1502}})";
    std::set<std::string> tags{EntityTag::Of(""), EntityTag::Of(std::string(1, '\0')), EntityTag::Of(document)};
    for (std::size_t length = 1; length < document.size(); ++length)
    {
        tags.insert(EntityTag::Of(document.substr(0, length)));
    }
    for (std::size_t bit = 0; bit < 8 * document.size(); ++bit)
    {
        std::string changed = document;
        changed[bit / 8] = static_cast<char>(changed[bit / 8] ^ (1 << bit % 8));
        tags.insert(EntityTag::Of(changed));
    }

    EXPECT_EQ(tags.size(), 2 + 9 * document.size());
    EXPECT_EQ(EntityTag::Of(document), EntityTag::Of(std::string(document)));
    for (std::string const& tag : tags)
    {
        EXPECT_TRUE(tag.size() > 2 && tag.front() == '"' && tag.back() == '"') << tag;
        EXPECT_EQ(tag.find_first_not_of("0123456789abcdef", 1), tag.size() - 1) << tag;
    }
}

TEST(EntityTag, IsFoundInAList)
{
    EXPECT_TRUE(EntityTag::IsNamed("\"a\"", "\"a\""));
    EXPECT_TRUE(EntityTag::IsNamed(" \"b\" ,\t\"a\" ", "\"a\""));
    EXPECT_TRUE(EntityTag::IsNamed("W/\"a\"", "\"a\""));
    EXPECT_TRUE(EntityTag::IsNamed("*", "\"a\""));
    EXPECT_FALSE(EntityTag::IsNamed("", "\"a\""));
    EXPECT_FALSE(EntityTag::IsNamed(" , ,", "\"a\""));
    EXPECT_FALSE(EntityTag::IsNamed("a", "\"a\""));
}

} // namespace ZuRest
