#include "Plugins/SparkplugMqtt/ServerWalk.h"

#include <gtest/gtest.h>

#include <vector>

namespace SparkplugMqtt
{

namespace
{

uint64 Most(uint64 most)
{
    return most;
}

uint64 Least(uint64 /*most*/)
{
    return 0;
}

} // namespace

TEST(ServerWalk, TriesTheServersInOrderAndBeginsAgain)
{
    ServerWalk walk(3, Most);
    std::vector<std::size_t> servers;
    for (int i = 0; i < 5; ++i)
    {
        servers.push_back(walk.Server());
        walk.Advance();
    }
    EXPECT_EQ(servers, (std::vector<std::size_t>{0, 1, 2, 0, 1}));
}

TEST(ServerWalk, DoublesThePauseBehindEachRoundUpToAMinute)
{
    ServerWalk walk(2, Most);
    std::vector<uint64> pauses;
    for (int i = 0; i < 18; ++i)
    {
        pauses.push_back(walk.Advance() / 1000);
    }
    EXPECT_EQ(pauses, (std::vector<uint64>{200, 1000, 200, 2000, 200, 4000, 200, 8000, 200, 16000, 200, 32000, 200,
                                           60000, 200, 60000, 200, 60000}));
}

TEST(ServerWalk, DrawsThePauseFromItsUpperHalf)
{
    EXPECT_EQ(ServerWalk(1, Least).Advance(), 500'000U);
    EXPECT_EQ(ServerWalk(1, Most).Advance(), 1'000'000U);
    EXPECT_EQ(ServerWalk(2, Least).Advance(), 100'000U);
}

TEST(ServerWalk, BeginsWithShortPausesAfterASuccess)
{
    ServerWalk walk(1, Most);
    for (int i = 0; i < 10; ++i)
    {
        walk.Advance();
    }
    EXPECT_EQ(walk.Advance(), 60'000'000U);
    walk.NoteSuccess();
    EXPECT_EQ(walk.Advance(), 1'000'000U);
}

TEST(ServerWalk, HasOnePlaceWithoutServers)
{
    ServerWalk walk(0, Most);
    walk.Advance();
    EXPECT_EQ(walk.Server(), 0U);
}

} // namespace SparkplugMqtt
