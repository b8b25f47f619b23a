#include "Host/Http/UnsentAnswers.h"

#include <gtest/gtest.h>

namespace ZuHost
{

namespace
{

using Unsent = UnsentAnswers<unsigned>;

constexpr bool OTHERS = true;
constexpr bool NOBODY = false;
constexpr uint64 NOW = 1'000'000;

} // namespace

TEST(UnsentAnswers, KeepsNoneForOneWhoIsAlone)
{
    Unsent unsent;

    EXPECT_FALSE(unsent.Keep(1, NOBODY, NOW));
    EXPECT_TRUE(unsent.IsEmpty());
    EXPECT_FALSE(unsent.IsDue(NOBODY, NOW + Unsent::PATIENCE_USEC));
}

TEST(UnsentAnswers, KeepsThemWhileOthersAreAtHandAndSendsThemInTheirOrder)
{
    Unsent unsent;
    EXPECT_TRUE(unsent.Keep(1, OTHERS, NOW));
    EXPECT_TRUE(unsent.Keep(2, OTHERS, NOW + 10));
    EXPECT_FALSE(unsent.IsDue(OTHERS, NOW + 10));
    EXPECT_TRUE(unsent.Keep(3, NOBODY, NOW + 20)) << "it does not pass those who were first";

    for (unsigned const next : {1U, 2U, 3U})
    {
        EXPECT_TRUE(unsent.IsDue(NOBODY, NOW + 20));
        EXPECT_EQ(unsent.Take(), next);
    }
    EXPECT_TRUE(unsent.IsEmpty());
}

TEST(UnsentAnswers, KeepsNoneBeyondItsPatience)
{
    Unsent unsent;
    unsent.Keep(1, OTHERS, NOW);
    unsent.Keep(2, OTHERS, NOW + Unsent::PATIENCE_USEC - 1);

    EXPECT_FALSE(unsent.IsDue(OTHERS, NOW + Unsent::PATIENCE_USEC - 1));
    EXPECT_TRUE(unsent.IsDue(OTHERS, NOW + Unsent::PATIENCE_USEC));
    unsent.Take();
    EXPECT_TRUE(unsent.IsDue(OTHERS, NOW + Unsent::PATIENCE_USEC)) << "all of them go";
    unsent.Take();

    unsent.Keep(3, OTHERS, NOW + 500);
    EXPECT_FALSE(unsent.IsDue(OTHERS, NOW + 500)) << "the time begins anew";
}

TEST(UnsentAnswers, KeepsAsManyAsItHasRoomFor)
{
    Unsent unsent;
    for (unsigned i = 0; i < Unsent::MOST; ++i)
    {
        EXPECT_TRUE(unsent.Keep(i, OTHERS, NOW));
    }

    EXPECT_FALSE(unsent.Keep(99, OTHERS, NOW));

    for (unsigned i = 0; i < Unsent::MOST; ++i)
    {
        EXPECT_EQ(unsent.Take(), i);
    }
}

} // namespace ZuHost
