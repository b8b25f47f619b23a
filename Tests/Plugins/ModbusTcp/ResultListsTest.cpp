// Blocks with lists of sources, and the encoder that fills them.

#include "Plugins/ModbusTcp/Blocks/DecisionBitsBlock.h"
#include "Plugins/ModbusTcp/Blocks/ResultQueueBlock.h"
#include "Plugins/ModbusTcp/ModbusMetrics.h"
#include "Plugins/ModbusTcp/RegisterImage.h"
#include "Plugins/ModbusTcp/ResultEncoder.h"
#include "Support/AllocationCounter.h"
#include "Support/RecordingSink.h"
#include "Support/TestFrames.h"
#include "Tests/Plugins/ModbusTcp/EncoderFixture.h"

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace ModbusTcp
{

using ZuTest::TestBatch;
using ZuTest::TestFrame;

class ResultListsTest : public EncoderFixture
{
protected:
    /// Values of the queue at `first` until it is empty.
    std::vector<int> Drain(uint16 first)
    {
        std::vector<int> values;
        for (Registers seen = Read(first, 48); seen[1] != 0; seen = Read(first, 48))
        {
            values.push_back(seen[17]);
            if (encoder.Acknowledge(first, seen[1], true) != ModbusException::NONE)
            {
                ADD_FAILURE() << seen[1] << " is not accepted";
                break;
            }
        }
        return values;
    }

    void Change(uint16 from, uint16 to, std::string const& dataSource = {})
    {
        Move(from, to, dataSource);
        Install();
    }

    void Remove(uint16 outputId)
    {
        ZuControl::ControlProtocol::RemoveBlockParams params;
        params.outputIdList.Add().outputId.Set(outputId);
        assembly.Remove(params);
        Install();
    }
};

TEST_F(ResultListsTest, PacksDecisionsWithTheFirstSourceInBit0)
{
    Place("DecisionBits", 200, "a, b,, d");
    Place("Decision", 210, "b");
    Install();
    EXPECT_EQ(Read(200, 2), (Registers{0, 0}));

    Process(TestFrame().Measurement("d", 1, 1).Measurement("a", 1, 1).Measurement("b", 1, 0).Measurement("c", 1, 1));

    EXPECT_EQ(Read(200, 2), (Registers{0b1001, 0b1011}));
    EXPECT_EQ(Read(210, 1), Registers{0});
}

TEST_F(ResultListsTest, MarksDecisionsThatAreMissingAsNotValid)
{
    Place("DecisionBits", 200, "a,b,c");
    Install();
    Process(TestFrame().Measurement("a", 1, 1).Measurement("b", 1, 1).Measurement("c", 1, 1));
    EXPECT_EQ(Read(200, 2), (Registers{7, 7}));

    Process(TestFrame().Null("a").Measurement("b", 3e9, 1)); // the value does not fit; c keeps its bits

    EXPECT_EQ(Read(200, 2), (Registers{4, 4}));
    encoder.Blank();
    EXPECT_EQ(Read(200, 2), (Registers{0, 0}));
}

TEST_F(ResultListsTest, ServesOneSourceAtSeveralPlaces)
{
    Place("DecisionBits", 200, "a,b,a");
    Place("DecisionBits", 204, "a");
    Install();

    Process(TestFrame().Measurement("a", 1, 1));

    EXPECT_EQ(Read(200, 6), (Registers{5, 5, 0, 0, 1, 1}));
}

TEST_F(ResultListsTest, KeepsBitsOfABlockThatMovesAndForgetsThoseOfOtherSources)
{
    Place("DecisionBits", 200, "a,b");
    Install();
    Process(TestFrame().Measurement("a", 1, 1).Measurement("b", 1, 0));

    Change(200, 220);
    EXPECT_EQ(Read(200, 2), (Registers{0, 0}));
    EXPECT_EQ(Read(220, 2), (Registers{1, 3}));

    Change(220, 220, "b,a");
    EXPECT_EQ(Read(220, 2), (Registers{0, 0}));
    Process(TestFrame().Measurement("a", 1, 1));
    EXPECT_EQ(Read(220, 2), (Registers{2, 2}));
}

TEST_F(ResultListsTest, ShowsTheOthersWhenOneSourceIsNoMeasurement)
{
    Place("DecisionBits", 200, "a,b");
    Install();
    ZuTest::LogRecorder log;
    TestFrame frame;
    frame.Measurement("a", 1, 1).Stamp("b", {});

    Process(frame);

    EXPECT_EQ(Read(200, 2), (Registers{1, 1}));
    EXPECT_EQ(counters.controlDrops, 0u);
}

TEST_F(ResultListsTest, HandsOverEachResultOnce)
{
    Place("ResultQueue", 300, "a");
    Install();
    for (int i = 1; i <= 5; ++i)
    {
        Process(TestFrame().Measurement("a", i / 1000.0));
    }
    EXPECT_EQ(counters.queuedResults, 5u);

    EXPECT_EQ(Drain(300), (std::vector<int>{1, 2, 3, 4, 5}));

    EXPECT_EQ(counters.queuedResults, 0u);
    EXPECT_EQ(counters.queueOverflows, 0u);
}

TEST_F(ResultListsTest, QueuesEverySetOfABatch)
{
    Place("ResultQueue", 300, "a");
    Install();
    TestBatch batch;
    for (int i = 1; i <= 5; ++i)
    {
        batch.Add(TestFrame().Measurement("a", i / 1000.0).Measurement("other", 1));
    }
    batch.Add(TestFrame().Measurement("other", 1)); // a set without the sources of the queue

    encoder.Process(batch.List());

    EXPECT_EQ(Drain(300), (std::vector<int>{1, 2, 3, 4, 5}));
}

TEST_F(ResultListsTest, HasAQueueForEachReader)
{
    Place("ResultQueue", 300, "a");
    Place("ResultQueue", 400, "a");
    Install();
    Process(TestFrame().Measurement("a", 0.001));
    Process(TestFrame().Measurement("a", 0.002));

    EXPECT_EQ(Drain(300), (std::vector<int>{1, 2}));
    EXPECT_EQ(Drain(400), (std::vector<int>{1, 2}));
}

TEST_F(ResultListsTest, KeepsQueuedResultsOverScansMovesAndOrders)
{
    Place("ResultQueue", 300, "a");
    Install();
    Process(TestFrame().Measurement("a", 0.001));

    encoder.Blank();
    Change(300, 500);
    EXPECT_EQ(Read(300, 48), Registers(48, 0));
    encoder.Pause();
    EXPECT_EQ(Read(500, 48), Registers(48, 0));
    Process(TestFrame().Measurement("a", 0.002)); // is not missed
    EXPECT_EQ(Read(500, 48), Registers(48, 0));
    assembly.ChangeBigEndianSupportedBlocks(false);
    encoder.Resume();

    EXPECT_EQ(Read(516, 2), (Registers{1, 0})); // the low register first
    uint16 const number = Read(501, 1)[0];
    EXPECT_EQ(encoder.Acknowledge(500, number, false), ModbusException::NONE);
    EXPECT_EQ(Read(516, 2), (Registers{2, 0}));
    EXPECT_EQ(counters.queueOverflows, 0u);
}

TEST_F(ResultListsTest, ShowsNothingOfAQueueThatIsChangedInAPause)
{
    Place("ResultQueue", 300, "a");
    Install();
    Process(TestFrame().Measurement("a", 0.001));
    uint16 const number = Read(301, 1)[0];
    encoder.Pause();

    EXPECT_EQ(encoder.Acknowledge(300, number, true), ModbusException::NONE);
    encoder.SetQueueDepth(5);

    EXPECT_EQ(Read(300, 48), Registers(48, 0));
    encoder.Resume();
    EXPECT_EQ(Read(300, 2), (Registers{number, 0}));
}

TEST_F(ResultListsTest, AcceptsNumbersInTheAcknowledgeRegisterOnly)
{
    Place("ResultQueue", 300, "a");
    Place("DecisionBits", 200, "a");
    Install();
    Process(TestFrame().Measurement("a", 0.001));
    uint16 const number = Read(301, 1)[0];

    EXPECT_EQ(encoder.Acknowledge(299, number, true), ModbusException::ILLEGAL_DATA_ADDRESS);
    EXPECT_EQ(encoder.Acknowledge(301, number, true), ModbusException::ILLEGAL_DATA_ADDRESS);
    EXPECT_EQ(encoder.Acknowledge(200, number, true), ModbusException::ILLEGAL_DATA_ADDRESS);
    EXPECT_EQ(encoder.Acknowledge(300, static_cast<uint16>(number + 1), true), ModbusException::ILLEGAL_DATA_VALUE);
    EXPECT_EQ(Read(301, 2), (Registers{number, 1}));
    EXPECT_EQ(encoder.Acknowledge(300, number, true), ModbusException::NONE);
    EXPECT_EQ(Read(300, 3), (Registers{number, 0, 0}));
}

TEST_F(ResultListsTest, TellsAnOverflowOnceUntilTheQueueIsEmpty)
{
    constexpr char const* FULL =
        "The result queue at register 300 is full: new results are lost until the PLC has read more";
    Place("ResultQueue", 300, "a");
    Install();
    encoder.SetQueueDepth(2);
    ZuTest::LogRecorder log;

    for (int i = 1; i <= 5; ++i)
    {
        Process(TestFrame().Measurement("a", i / 1000.0));
    }

    EXPECT_EQ(log.CountOfText(FULL), 1u);
    EXPECT_EQ(counters.queueOverflows, 3u);
    EXPECT_EQ(counters.overflowingQueues, 1u);
    EXPECT_EQ(encoder.OverflowingQueue(), 300);
    EXPECT_EQ(Drain(300), (std::vector<int>{1, 2}));
    EXPECT_EQ(encoder.OverflowingQueue(), -1);
    EXPECT_EQ(counters.overflowingQueues, 0u);
    for (int i = 1; i <= 4; ++i)
    {
        Process(TestFrame().Measurement("a", i / 1000.0));
    }
    EXPECT_EQ(log.CountOfText(FULL), 2u);
    EXPECT_EQ(counters.controlDrops, 0u); // they were taken in time
}

TEST_F(ResultListsTest, TellsResultsThatAChangeOfTheMapLoses)
{
    Place("ResultQueue", 300, "a");
    Place("ResultQueue", 400, "a");
    Install();
    for (int i = 1; i <= 3; ++i)
    {
        Process(TestFrame().Measurement("a", i / 1000.0));
    }
    ZuTest::LogRecorder log;

    Change(300, 300, "b");
    EXPECT_EQ(Read(301, 3), (Registers{0, 0, 3}));
    Remove(400);

    EXPECT_EQ(
        log.CountOfText("A change of the result queue at register 300 has lost 3 results that the PLC had not read"),
        1u);
    EXPECT_EQ(
        log.CountOfText("A change of the result queue at register 400 has lost 3 results that the PLC had not read"),
        1u);
    EXPECT_EQ(counters.queueOverflows, 6u);
    EXPECT_EQ(counters.queuedResults, 0u);
    EXPECT_EQ(Read(400, 48), Registers(48, 0));
}

TEST_F(ResultListsTest, LosesTheNewestWhenTheDepthShrinks)
{
    Place("ResultQueue", 300, "a");
    Place("DecisionBits", 200, "a");
    Install();
    for (int i = 1; i <= 5; ++i)
    {
        Process(TestFrame().Measurement("a", i / 1000.0));
    }

    encoder.SetQueueDepth(2);

    EXPECT_EQ(Read(302, 2), (Registers{2, 3}));
    EXPECT_EQ(counters.queueOverflows, 3u);
    EXPECT_EQ(counters.queuedResults, 2u);
    EXPECT_EQ(Drain(300), (std::vector<int>{1, 2}));
    Place("ResultQueue", 400, "a"); // a later queue has the same depth
    Install();
    for (int i = 1; i <= 3; ++i)
    {
        Process(TestFrame().Measurement("a", i / 1000.0));
    }
    EXPECT_EQ(Drain(400), (std::vector<int>{1, 2}));
}

TEST_F(ResultListsTest, AllocatesNothingForAResult)
{
    Place("ResultQueue", 300, "a,b,stamp");
    Place("DecisionBits", 200, "a,b");
    Install();
    TestFrame frame;
    frame.Stamp("stamp", {}).Measurement("a", 1).Measurement("b", 2);
    TestBatch batch;
    batch.Add(frame);
    encoder.Process(batch.List());

    ZuTest::AllocationCounter const allocations;
    for (int i = 0; i < 50; ++i)
    {
        encoder.Process(batch.List());
        std::array<uint16, 2> registers;
        image->Read(300, registers);
        encoder.Acknowledge(300, registers[1], true);
    }

    EXPECT_EQ(allocations.Count(), 0u);
    EXPECT_EQ(counters.queuedResults, 1u);
}

TEST_F(ResultListsTest, MissesNoResultAndTearsNoneWhileAnotherThreadReads)
{
    constexpr int RESULTS = 5000;
    Place("ResultQueue", 300, "a,b");
    Place("MeasurementValue", 400, "a");
    Install();
    encoder.SetQueueDepth(RESULTS);
    std::thread results([&] {
        for (int i = 1; i <= RESULTS; ++i)
        {
            Process(TestFrame().Measurement("a", i / 1000.0).Measurement("b", i / 1000.0));
        }
    });

    int expected = 1;
    int torn = 0;
    while (expected <= RESULTS)
    {
        Registers const seen = Read(300, 48);
        if (seen[1] == 0)
        {
            std::this_thread::yield();
            continue;
        }
        torn += seen[17] == expected && seen[19] == expected ? 0 : 1;
        ASSERT_EQ(encoder.Acknowledge(300, seen[1], true), ModbusException::NONE);
        ++expected;
    }
    results.join();

    EXPECT_EQ(torn, 0);
    EXPECT_EQ(Read(301, 3), (Registers{0, 0, 0}));
}

} // namespace ModbusTcp
