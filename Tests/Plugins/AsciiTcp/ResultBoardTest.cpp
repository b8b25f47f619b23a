#include "Plugins/AsciiTcp/ResultBoard.h"
#include "Plugins/AsciiTcp/AsciiMetrics.h"
#include "Plugins/AsciiTcp/AsciiOutputMap.h"
#include "Plugins/AsciiTcp/DataFeed.h"
#include "Support/AllocationCounter.h"
#include "Support/TestFrames.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace AsciiTcp
{

using ZuControl::ControlProtocol::TextIdStandardOutputItemArgs;
using ZuTest::TestBatch;
using ZuTest::TestFrame;

class ResultBoardTest : public testing::Test
{
protected:
    ResultBoardTest()
    {
        map.RemoveAll();
        board.SetDecimals(2);
    }

    void Connect(std::string const& name, std::string const& source)
    {
        TextIdStandardOutputItemArgs item;
        item.outputId.Set(name);
        item.source.Set(source);
        map.Add(item);
        board.Install(OutputTable::Take(map));
    }

    void Remove(std::string const& name)
    {
        TextIdStandardOutputItemArgs item;
        item.outputId.Set(name);
        map.Remove(item);
        board.Install(OutputTable::Take(map));
    }

    bool Process(TestFrame const& frame)
    {
        TestBatch batch;
        batch.Add(frame);
        return board.Process(batch.List());
    }

    std::string Get(std::string const& name)
    {
        std::string line;
        return board.AppendReading(line, name) ? line : "no such output";
    }

    std::string Names()
    {
        std::string line;
        board.AppendNames(line);
        return line;
    }

    std::string Lines()
    {
        std::string lines;
        feed.Read(next, lines, 1'000'000);
        return lines;
    }

    AsciiOutputMap map;
    DataFeed feed;
    AsciiCounters counters;
    ResultBoard board{feed, counters};
    uint64 next = 0;
};

TEST_F(ResultBoardTest, HasNoneBeforeAResultComes)
{
    EXPECT_EQ(Names(), "0");
    Connect("height", "zMax");

    EXPECT_EQ(Get("height"), "height none 0");
    EXPECT_EQ(Get("Height"), "no such output");
    EXPECT_EQ(Names(), "1 height");
}

TEST_F(ResultBoardTest, GivesTheNewestValueOfABatch)
{
    Connect("height", "zMax");
    TestBatch batch;
    batch.Add(TestFrame().Measurement("zMax", 1)).Add(TestFrame().Measurement("zMax", 2.346, 0));

    board.Process(batch.List());

    EXPECT_EQ(Get("height"), "height 2.35 0");
    EXPECT_EQ(counters.resultSets, 2u);
}

TEST_F(ResultBoardTest, KeepsTheReadingOfASourceThatASetDoesNotHave)
{
    Connect("height", "zMax");
    Process(TestFrame().Measurement("zMax", 1));

    Process(TestFrame().Measurement("width", 5));

    EXPECT_EQ(Get("height"), "height 1.00 1");
}

TEST_F(ResultBoardTest, SaysThatAResultIsNoNumber)
{
    Connect("height", "zMax");
    for (double const value : {ZuVision::MISSING_MEASUREMENT, std::numeric_limits<double>::quiet_NaN(),
                               std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()})
    {
        Process(TestFrame().Measurement("zMax", 1));
        Process(TestFrame().Measurement("zMax", value, 0));
        EXPECT_EQ(Get("height"), "height invalid 0") << value;
    }
    Process(TestFrame().Measurement("zMax", 1));
    Process(TestFrame().Null("zMax"));
    EXPECT_EQ(Get("height"), "height invalid 0");
}

TEST_F(ResultBoardTest, ReadsAStampAsItsFrameCounter)
{
    Connect("frame", "stamp");

    Process(TestFrame().Stamp("stamp", {0, 41, 0, 0, 0}));

    EXPECT_EQ(Get("frame"), "frame 41.00 1");
}

TEST_F(ResultBoardTest, WritesALineForEachSetWhileSomebodyReads)
{
    Connect("width", "w");
    Connect("a b", "zMax");
    EXPECT_FALSE(Process(TestFrame().Measurement("zMax", 1)));
    EXPECT_EQ(Lines(), "");
    feed.AddReader();

    EXPECT_TRUE(Process(TestFrame().Stamp("stamp", {0, 7, 0, 0, 0}).Measurement("zMax", 1).Measurement("w", 2, 0)));
    EXPECT_TRUE(Process(TestFrame().Stamp("stamp", {0, 8, 0, 0, 0}).Measurement("w", 3)));
    EXPECT_TRUE(Process(TestFrame().Null("zMax")));

    EXPECT_EQ(Lines(), "DATA 7 a%20b=1.00:1 width=2.00:0\n"
                       "DATA 8 width=3.00:1\n"
                       "DATA - a%20b=invalid:0\n");
}

TEST_F(ResultBoardTest, KeepsReadingsWhenTheOutputsChange)
{
    Connect("height", "zMax");
    Connect("width", "w");
    Process(TestFrame().Measurement("zMax", 1).Measurement("w", 2));

    Connect("another", "a");
    EXPECT_EQ(Get("height"), "height 1.00 1");
    EXPECT_EQ(Get("another"), "another none 0");
    Remove("height");
    EXPECT_EQ(Get("height"), "no such output");
    EXPECT_EQ(Get("width"), "width 2.00 1");
    Connect("height", "other");
    EXPECT_EQ(Get("height"), "height none 0"); // another source: the old reading is dropped
}

TEST_F(ResultBoardTest, TakesNewDigitsAtOnce)
{
    Connect("height", "zMax");
    Process(TestFrame().Measurement("zMax", 1.23456));

    board.SetDecimals(4);

    EXPECT_EQ(Get("height"), "height 1.2346 1");
}

TEST_F(ResultBoardTest, AllocatesNothingPerSet)
{
    Connect("height", "zMax");
    Connect("width", "w");
    feed.AddReader();
    TestBatch batch;
    batch.Add(TestFrame().Stamp("stamp", {0, 7, 0, 0, 0}).Measurement("zMax", 1).Measurement("w", 2));
    board.Process(batch.List());
    ZuTest::AllocationCounter const counter;

    for (int i = 0; i < 100; ++i)
    {
        board.Process(batch.List());
    }

    EXPECT_EQ(counter.Count(), 0u);
}

} // namespace AsciiTcp
