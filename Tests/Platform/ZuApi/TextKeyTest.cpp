#include "ZuApi/TextKey.h"

#include <gtest/gtest.h>

#include <string>

namespace Zu::Properties::Internal
{

namespace
{

/// Takes its argument as operations do that accept a literal or any other text.
TextKey Taken(TextKey key)
{
    return key;
}

} // namespace

TEST(TextKey, KnowsALiteralFromATextMadeAtRunTime)
{
    std::string const text = "outputId";
    char const* const pointer = text.c_str();

    EXPECT_TRUE(Taken("outputId").IsLiteral());
    EXPECT_FALSE(Taken(text).IsLiteral());
    EXPECT_FALSE(Taken(pointer).IsLiteral());
    EXPECT_FALSE(TextKey(std::string_view(text)).IsLiteral());
}

TEST(TextKey, HasTheSameTextAndHashHoweverItIsGiven)
{
    std::string const text = "outputId";
    char const* const pointer = text.c_str();

    for (TextKey const& key : {Taken("outputId"), Taken(text), Taken(pointer), TextKey(std::string_view(text))})
    {
        EXPECT_EQ(key.Text(), "outputId");
        EXPECT_EQ(key.Hash(), TextKey("outputId").Hash());
    }
    EXPECT_NE(TextKey("outputId").Hash(), TextKey("outputIe").Hash());
}

TEST(TextKey, MayBeEmpty)
{
    EXPECT_EQ(Taken("").Text(), "");
    EXPECT_EQ(Taken(std::string()).Text(), "");
}

} // namespace Zu::Properties::Internal
