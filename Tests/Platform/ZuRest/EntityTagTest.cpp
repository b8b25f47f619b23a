#include "ZuRest/EntityTag.h"

#include <gtest/gtest.h>

namespace ZuRest
{

TEST(EntityTag, IsTheHashOfTheTextInQuotes)
{
    EXPECT_EQ(EntityTag::Of(""), "\"cbf29ce484222325\"");
    EXPECT_EQ(EntityTag::Of("a"), "\"af63dc4c8601ec8c\"");
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
