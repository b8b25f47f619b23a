#include "Plugins/ModbusTcp/ResultEncoder.h"
#include "Plugins/ModbusTcp/ModbusMetrics.h"
#include "Plugins/ModbusTcp/RegisterImage.h"
#include "Support/RecordingSink.h"
#include "Support/TestFrames.h"
#include "Tests/Plugins/ModbusTcp/EncoderFixture.h"
#include "ZuControl/ControlProtocol/RegisterBlockParams.h"

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

namespace ModbusTcp
{

using ZuTest::TestBatch;
using ZuTest::TestFrame;

class ResultEncoderTest : public EncoderFixture
{
};

TEST_F(ResultEncoderTest, MarksMeasurementsAsMissingBeforeTheFirstResult)
{
    Place("Measurement", 170, "a");
    Place("MeasurementValue", 10, "b");
    Place("Decision", 20, "c");
    Place("Stamp", 100, "d");

    Install();

    EXPECT_EQ(Read(169, 5), (Registers{0, 0x8000, 0, 0, 0}));
    EXPECT_EQ(Read(10, 2), (Registers{0x8000, 0}));
    EXPECT_EQ(Read(20, 1), Registers{0});
    EXPECT_EQ(Read(100, 20), Registers(20, 0));
}

TEST_F(ResultEncoderTest, MarksMeasurementsAsMissingOnDemand)
{
    Place("Measurement", 170, "a");
    Place("Decision", 180, "a");
    Install();
    Process(TestFrame().Measurement("a", 0.002, 1));

    encoder.Blank();

    EXPECT_EQ(Read(170, 3), (Registers{0x8000, 0, 0}));
    EXPECT_EQ(Read(180, 1), Registers{0});
    Process(TestFrame().Measurement("a", 0.003, 1));
    EXPECT_EQ(Read(170, 3), (Registers{0, 3, 1}));
}

TEST_F(ResultEncoderTest, MarksMeasurementsAsMissingInTheOrderOfTheRegisters)
{
    Place("MeasurementValue", 10, "a");
    Install();

    encoder.Pause();
    assembly.ChangeBigEndianSupportedBlocks(false);
    encoder.Resume();

    EXPECT_EQ(Read(10, 2), (Registers{0, 0x8000}));
}

TEST_F(ResultEncoderTest, PutsEachResultWhereItsBlockLies)
{
    Place("Measurement", 170, "a");
    Place("Decision", 180, "b");
    Install();

    Process(TestFrame().Measurement("b", 1, 0).Measurement("a", 0.002, 1).Measurement("c", 5));

    EXPECT_EQ(Read(169, 5), (Registers{0, 0, 2, 1, 0}));
    EXPECT_EQ(Read(180, 1), (Registers{0}));
    EXPECT_EQ(counters.resultSets, 1u);
}

TEST_F(ResultEncoderTest, ServesSeveralBlocksOfOneSource)
{
    Place("MeasurementValue", 10, "a");
    Place("Decision", 20, "a");
    Place("MeasurementValue", 30, "a");
    Install();

    Process(TestFrame().Measurement("a", 0.003, 1));

    EXPECT_EQ(Read(10, 2), (Registers{0, 3}));
    EXPECT_EQ(Read(20, 1), (Registers{1}));
    EXPECT_EQ(Read(30, 2), (Registers{0, 3}));
}

TEST_F(ResultEncoderTest, KeepsWhatASetDoesNotHave)
{
    Place("MeasurementValue", 10, "a");
    Place("MeasurementValue", 12, "b");
    Install();

    Process(TestFrame().Measurement("a", 0.001).Measurement("b", 0.002));
    Process(TestFrame().Measurement("b", 0.003));

    EXPECT_EQ(Read(10, 4), (Registers{0, 1, 0, 3}));
}

TEST_F(ResultEncoderTest, ShowsTheLastSetOfABatch)
{
    Place("MeasurementValue", 10, "a");
    Install();
    TestBatch batch;
    for (int i = 1; i <= 5; ++i)
    {
        batch.Add(TestFrame().Measurement("a", i / 1000.0));
    }

    encoder.Process(batch.List());

    EXPECT_EQ(Read(10, 2), (Registers{0, 5}));
    EXPECT_EQ(counters.resultSets, 5u);
}

TEST_F(ResultEncoderTest, CarriesTheValueOfABlockThatMovesAndClearsWhereItWas)
{
    Place("MeasurementValue", 10, "a");
    Place("MeasurementValue", 12, "b");
    Install();
    Process(TestFrame().Measurement("a", 0.001).Measurement("b", 0.002));

    Move(10, 500);
    Install();

    EXPECT_EQ(Read(10, 4), (Registers{0, 0, 0, 2}));
    EXPECT_EQ(Read(500, 2), (Registers{0, 1}));
    Process(TestFrame().Measurement("a", 0.007));
    EXPECT_EQ(Read(10, 4), (Registers{0, 0, 0, 2}));
    EXPECT_EQ(Read(500, 2), (Registers{0, 7}));
}

TEST_F(ResultEncoderTest, ForgetsTheValueOfABlockThatFollowsAnotherSource)
{
    Place("MeasurementValue", 10, "a");
    Install();
    Process(TestFrame().Measurement("a", 0.001));

    Move(10, 10, "b");
    Install();

    EXPECT_EQ(Read(10, 2), (Registers{0x8000, 0}));
}

TEST_F(ResultEncoderTest, BlanksABlockThatHasAnotherOrderUntilItsNextResult)
{
    Place("MeasurementValue", 10, "a");
    Place("MeasurementValue", 20, "a");
    Install();
    Process(TestFrame().Measurement("a", 0.001));

    SetOrder(10, "DCBA");
    Install();

    EXPECT_EQ(Read(10, 2), (Registers{0, 0x0080}));
    EXPECT_EQ(Read(20, 2), (Registers{0, 1}));
    Process(TestFrame().Measurement("a", 0.002));
    EXPECT_EQ(Read(10, 2), (Registers{0x0200, 0}));
}

TEST_F(ResultEncoderTest, ShowsAListInANewOrderWithItsLayout)
{
    Place("DecisionBits", 10, "a, b");
    Install();
    Process(TestFrame().Measurement("a", 1, 1).Measurement("b", 1, 0));
    EXPECT_EQ(Read(10, 2), (Registers{1, 3}));

    SetOrder(10, "BADC");
    Process(TestFrame().Measurement("a", 1, 1).Measurement("b", 1, 1));
    EXPECT_EQ(Read(10, 2), (Registers{1, 3})) << "the layout is not installed";
    Install();
    EXPECT_EQ(Read(10, 2), (Registers{0x0300, 0x0300}));
}

TEST_F(ResultEncoderTest, PassesOverALayoutThatCameLate)
{
    Place("MeasurementValue", 10, "a");
    auto const older = RegisterLayout::Take(assembly);
    Move(10, 20);
    Install();

    encoder.Install(older);

    Process(TestFrame().Measurement("a", 0.001));
    EXPECT_EQ(Read(10, 2), (Registers{0, 0}));
    EXPECT_EQ(Read(20, 2), (Registers{0, 1}));
}

TEST_F(ResultEncoderTest, ClearsABlockThatCannotTakeItsResultAndTellsItOnce)
{
    Place("Stamp", 100, "a");
    Place("MeasurementValue", 10, "b");
    Install();
    ZuTest::LogRecorder log;

    for (int i = 0; i < 3; ++i)
    {
        Process(TestFrame().Measurement("a", 1).Measurement("b", 0.002));
    }

    EXPECT_EQ(Read(100, 20), Registers(20, 0));
    EXPECT_EQ(Read(10, 2), (Registers{0, 2}));
    EXPECT_EQ(counters.controlDrops, 3u);
    EXPECT_EQ(log.CountOfText("The block at register 100 cannot take the results of its data source"), 1u);
}

TEST_F(ResultEncoderTest, ShowsNothingFromAPauseUntilResultsComeAgain)
{
    Place("MeasurementValue", 10, "a");
    Install();
    Process(TestFrame().Measurement("a", 0.001));

    encoder.Pause();
    EXPECT_EQ(Read(10, 2), (Registers{0, 0}));
    Process(TestFrame().Measurement("a", 0.002));
    EXPECT_EQ(Read(10, 2), (Registers{0, 0}));
    encoder.Resume();
    EXPECT_EQ(Read(10, 2), (Registers{0x8000, 0}));

    Process(TestFrame().Measurement("a", 0.003));
    EXPECT_EQ(Read(10, 2), (Registers{0, 3}));
}

TEST_F(ResultEncoderTest, MixesNoTwoSetsWhileAnotherThreadReads)
{
    constexpr uint16 BLOCKS = 30;
    for (uint16 i = 0; i < BLOCKS; ++i)
    {
        Place("MeasurementValue", static_cast<uint16>(100 + 4 * i), "m");
    }
    Install();
    std::atomic<bool> done{false};
    std::thread results([&] {
        for (int i = 1; i <= 3000; ++i)
        {
            Process(TestFrame().Measurement("m", i));
        }
        done = true;
    });

    uint64 torn = 0;
    while (!done)
    {
        Registers const seen = Read(100, 4 * BLOCKS);
        for (std::size_t i = 4; i < seen.size(); i += 4)
        {
            torn += seen[i] == seen[0] && seen[i + 1] == seen[1] ? 0 : 1;
        }
    }
    results.join();

    EXPECT_EQ(torn, 0u);
    EXPECT_EQ(Read(100, 2), (Registers{3000000 >> 16, 3000000 & 0xFFFF}));
}

} // namespace ModbusTcp
