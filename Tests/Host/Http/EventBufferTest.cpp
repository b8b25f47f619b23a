#include "Host/Http/EventBuffer.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>

namespace ZuHost
{

TEST(EventBuffer, GivesEventsWithTheirIds)
{
    EventBuffer buffer(false, [] {});

    buffer.Receive({{"a", "x\ny"}});
    buffer.Receive(2);

    EXPECT_EQ(buffer.Take(), "id: 1\ndata: {\"a\":\"x\\ny\"}\n\nid: 2\ndata: 2\n\n");
    EXPECT_EQ(buffer.Take(), "");
}

TEST(EventBuffer, WakesOnceUntilItIsTaken)
{
    unsigned wakes = 0;
    EventBuffer buffer(false, [&wakes] { ++wakes; });

    buffer.Receive(1);
    buffer.Receive(2);
    EXPECT_EQ(wakes, 1U);
    buffer.Take();
    buffer.Receive(3);

    EXPECT_EQ(wakes, 2U);
}

TEST(EventBuffer, SkipsToTheNewestState)
{
    EventBuffer buffer(true, [] {});

    buffer.Receive(1);
    buffer.Receive(2);
    buffer.Receive(3);

    EXPECT_EQ(buffer.Take(), "id: 3\ndata: 3\n\n");
}

TEST(EventBuffer, KeepsEachNewsOnce)
{
    EventBuffer buffer(false, [] {});

    buffer.Receive("a");
    buffer.Receive("b");
    buffer.Receive("a");

    EXPECT_EQ(buffer.Take(), "id: 2\ndata: \"b\"\n\nid: 3\ndata: \"a\"\n\n");
}

TEST(EventBuffer, NeverGrowsBeyondItsBound)
{
    EventBuffer buffer(false, [] {});

    for (unsigned i = 0; i < 1000; ++i)
    {
        buffer.Receive(i);
    }

    std::string const text = buffer.Take();
    EXPECT_TRUE(text.starts_with("id: 745\ndata: 744\n\n")) << text.substr(0, 40);
    EXPECT_TRUE(text.ends_with("id: 1000\ndata: 999\n\n"));
    EXPECT_EQ(std::count(text.begin(), text.end(), 'd'), 512);
}

} // namespace ZuHost
