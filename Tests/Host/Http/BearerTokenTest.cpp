#include "Host/Http/BearerToken.h"

#include <gtest/gtest.h>

namespace ZuHost
{

TEST(BearerToken, IsNotAskedForWhenThereIsNone)
{
    EXPECT_TRUE(BearerToken::IsGiven("", ""));
}

TEST(BearerToken, IsTheWholeOfWhatFollowsTheScheme)
{
    EXPECT_TRUE(BearerToken::IsGiven("secret", "Bearer secret"));
    EXPECT_TRUE(BearerToken::IsGiven("secret", "bearer   secret"));
    for (char const* const header : {"", "Bearer", "Bearer ", "secret", "Basic secret", "Bearer secre",
                                     "Bearer secrets", "Bearer Secret", "Bearersecret"})
    {
        EXPECT_FALSE(BearerToken::IsGiven("secret", header)) << header;
    }
}

} // namespace ZuHost
