#include "Plugins/SparkplugMqtt/FrequentEvents.h"
#include "ZuCommon/Problems.h"

#include <gtest/gtest.h>

namespace SparkplugMqtt
{

TEST(FrequentEvents, AreAProblemUntilAWindowWithFew)
{
    constexpr uint64 WINDOW = FrequentEvents::WINDOW_USEC;
    ZuCommon::ProblemsManager problems;
    FrequentEvents events(problems, 3, "it is often");
    events.Look(0, 5);
    events.Look(2, 6);
    EXPECT_EQ(problems.Count(), 0U);
    events.Look(3, 7);
    ASSERT_EQ(problems.Count(), 1U);
    EXPECT_EQ(problems.List().front().text, "it is often");
    events.Look(5, 5 + WINDOW); // the end of the first window
    events.Look(7, 4 + 2 * WINDOW);
    EXPECT_EQ(problems.Count(), 1U);
    events.Look(7, 5 + 2 * WINDOW); // two in the second one
    EXPECT_EQ(problems.Count(), 0U);
    events.Look(10, 6 + 2 * WINDOW);
    EXPECT_EQ(problems.Count(), 1U);
}

TEST(FrequentEvents, EachOneCountsIfOneIsEnough)
{
    ZuCommon::ProblemsManager problems;
    FrequentEvents events(problems, 1, "it has happened");
    events.Look(0, 0);
    EXPECT_EQ(problems.Count(), 0U);
    events.Look(1, 1);
    EXPECT_EQ(problems.Count(), 1U);
}

} // namespace SparkplugMqtt
