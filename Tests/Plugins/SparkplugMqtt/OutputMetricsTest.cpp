#include "Plugins/SparkplugMqtt/OutputMetrics.h"
#include "Plugins/SparkplugMqtt/CommandPayload.h"
#include "Plugins/SparkplugMqtt/SampleQueue.h"
#include "Plugins/SparkplugMqtt/SparkplugOutputMap.h"
#include "Support/AllocationCounter.h"
#include "Support/TestFrames.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <map>
#include <string>
#include <vector>

namespace SparkplugMqtt
{

using ZuControl::ControlProtocol::TextIdStandardOutputItemArgs;
using ZuTest::TestBatch;
using ZuTest::TestFrame;

TEST(ScanClock, FollowsTheScanThatArrivedSoonest)
{
    ScanClock clock;
    EXPECT_EQ(clock.UtcMsec(5'000'000, 100'000), 100'000U);
    EXPECT_EQ(clock.UtcMsec(5'010'000, 100'030), 100'010U); // 20 ms under way
    EXPECT_EQ(clock.UtcMsec(5'020'000, 100'015), 100'015U); // 5 ms sooner than the first one
    EXPECT_EQ(clock.UtcMsec(5'030'000, 100'030), 100'025U);
}

TEST(ScanClock, BeginsAnewWhenAClockJumps)
{
    ScanClock clock;
    EXPECT_EQ(clock.UtcMsec(5'000'000, 100'000), 100'000U);
    EXPECT_EQ(clock.UtcMsec(5'010'000, 200'000), 200'000U);
    EXPECT_EQ(clock.UtcMsec(5'020'000, 50'000), 50'000U);
    EXPECT_EQ(clock.UtcMsec(1'000, 50'500), 50'500U); // the sensor's clock began anew
}

class OutputMetricsTest : public testing::Test
{
protected:
    OutputMetricsTest()
    {
        map.RemoveAll();
        Connect("a", "s/a");
        Connect("b", "s/b");
    }

    void Connect(std::string const& id, std::string const& source)
    {
        TextIdStandardOutputItemArgs item;
        item.outputId.Set(id);
        item.source.Set(source);
        map.Add(item);
        outputs.Install(map);
    }

    /// Processes a frame of the time `msec` at that moment.
    void Process(uint64 msec, TestFrame& frame)
    {
        frame.Stamp("s/stamp", {0, 7, msec * 1000, 0, 0});
        TestBatch batch;
        batch.Add(frame);
        outputs.Process(batch.List(), msec);
    }

    void Process(uint64 msec, double a, double b, uint8 decision = 1)
    {
        TestFrame frame;
        frame.Measurement("s/a", a, decision).Measurement("s/b", b, decision);
        Process(msec, frame);
    }

    static std::string TextOf(CommandMetric const& metric)
    {
        static constexpr char const* KINDS[] = {"null", "", "", "", "text"};
        std::string text = KINDS[metric.value.index()];
        if (bool const* const flag = std::get_if<bool>(&metric.value); flag != nullptr)
        {
            text = *flag ? "yes" : "no";
        }
        if (double const* const value = std::get_if<double>(&metric.value); value != nullptr)
        {
            text = std::to_string(*value).substr(0, 3);
        }
        return text;
    }

    std::string NameOf(CommandMetric const& metric)
    {
        return metric.name.empty() ? names[metric.alias.value()] : metric.name;
    }

    /// The metrics of the next sample, such as "Outputs/a=1.0 Decisions/a=yes"; "none" without one.
    std::string Next()
    {
        Sample sample;
        std::vector<CommandMetric> metrics;
        if (!queue.Take(sample) || !DecodeCommand(sample.metrics, metrics))
        {
            return "none";
        }
        return All(metrics);
    }

    std::string All(std::vector<CommandMetric> const& metrics)
    {
        std::string text;
        for (CommandMetric const& metric : metrics)
        {
            text += (text.empty() ? "" : " ") + NameOf(metric) + "=" + TextOf(metric);
        }
        return text;
    }

    std::string Birth()
    {
        MetricWriter writer(64 * 1024);
        aliases.clear();
        outputs.WriteBirth(writer, 5, aliases);
        std::vector<CommandMetric> metrics;
        EXPECT_TRUE(DecodeCommand(writer.Bytes(), metrics));
        for (CommandMetric const& metric : metrics)
        {
            names[metric.alias.value()] = metric.name;
        }
        return All(metrics);
    }

    SparkplugOutputMap map;
    SampleQueue queue{[] {}};
    OutputMetrics outputs{queue};
    std::vector<uint64> aliases;
    std::map<uint64, std::string> names;
};

TEST_F(OutputMetricsTest, ABirthHasNullsBeforeTheFirstResult)
{
    EXPECT_EQ(Birth(), "Outputs/a=null Decisions/a=no Outputs/b=null Decisions/b=no");
    EXPECT_EQ(aliases.size(), 4U);
    EXPECT_TRUE(std::ranges::is_sorted(aliases));
    EXPECT_GE(aliases.front(), OutputMetrics::FIRST_HASHED_ALIAS);
}

TEST_F(OutputMetricsTest, TheFingerprintFollowsIdsAndSources)
{
    uint32 const before = outputs.Fingerprint();
    map.RemoveAll();
    Connect("a", "s/b");
    Connect("b", "s/a");
    EXPECT_NE(outputs.Fingerprint(), before);
    map.RemoveAll();
    Connect("b", "s/b");
    Connect("a", "s/a");
    EXPECT_EQ(outputs.Fingerprint(), before);
}

TEST_F(OutputMetricsTest, OtherLimitsOfAnOutputGiveANewLayout)
{
    uint64 const first = outputs.Layout();
    outputs.SetLimits({{"s/other", {1, 2}}});
    EXPECT_EQ(outputs.Layout(), first);
    outputs.SetLimits({{"s/a", {1, 2}}});
    EXPECT_EQ(outputs.Layout(), first + 1);
    outputs.SetLimits({{"s/a", {1, 2}}});
    EXPECT_EQ(outputs.Layout(), first + 1);
    outputs.SetLimits({{"s/a", {1, 3}}});
    EXPECT_EQ(outputs.Layout(), first + 2);
    outputs.SetLimits({});
    EXPECT_EQ(outputs.Layout(), first + 3);
}

TEST_F(OutputMetricsTest, ABirthHasUnitAndLimitsOfAValue)
{
    map.RemoveAll();
    Connect("a", "profile/zMax");
    auto const properties = [this] {
        MetricWriter birth(4096);
        aliases.clear();
        outputs.WriteBirth(birth, 5, aliases);
        std::string const bytes(birth.Bytes().begin(), birth.Bytes().end());
        return std::vector<bool>{bytes.find("engUnit") != std::string::npos, bytes.find("engLow") != std::string::npos,
                                 bytes.find("engHigh") != std::string::npos};
    };
    EXPECT_EQ(properties(), (std::vector<bool>{true, false, false}));
    outputs.SetLimits({{"profile/zMax", {1, 2}}, {"s/b", {3, 4}}});
    EXPECT_EQ(properties(), (std::vector<bool>{true, true, true}));
    map.RemoveAll();
    Connect("b", "s/b");
    EXPECT_EQ(properties(), (std::vector<bool>{false, true, true})); // its unit is not known
}

TEST_F(OutputMetricsTest, ASampleHasWhatChanged)
{
    Birth();
    Process(1000, 1, 2);
    EXPECT_EQ(Next(), "Outputs/a=1.0 Decisions/a=yes Outputs/b=2.0 Decisions/b=yes");
    Process(1001, 1, 3);
    EXPECT_EQ(Next(), "Outputs/b=3.0");
    Process(1002, 1, 3);
    EXPECT_EQ(Next(), "none");
    Process(1003, 1, 3, 0);
    EXPECT_EQ(Next(), "Decisions/a=no Decisions/b=no");
    Process(1004, 1, 4, 1);
    EXPECT_EQ(Next(), "Decisions/a=yes Outputs/b=4.0 Decisions/b=yes");
    EXPECT_EQ(Birth(), "Outputs/a=1.0 Decisions/a=yes Outputs/b=4.0 Decisions/b=yes");
}

TEST_F(OutputMetricsTest, AMissingValueIsNull)
{
    Birth();
    Process(1000, 1, 2);
    Next();
    Process(1001, ZuVision::MISSING_MEASUREMENT, 2, 1);
    EXPECT_EQ(Next(), "Outputs/a=null");
    Process(1002, std::numeric_limits<double>::quiet_NaN(), 2, 1);
    EXPECT_EQ(Next(), "none");
    Process(1003, 1, 2);
    EXPECT_EQ(Next(), "Outputs/a=1.0");
    TestFrame frame;
    frame.Null("s/b");
    Process(1004, frame);
    EXPECT_EQ(Next(), "Outputs/b=null Decisions/b=no");
}

TEST_F(OutputMetricsTest, TheDeadBandHoldsSmallChangesBack)
{
    Birth();
    outputs.SetRules(0.5, 0);
    Process(1000, 1, 2);
    Next();
    Process(1001, 1.5, 2);
    EXPECT_EQ(Next(), "none");
    Process(1002, 1.6, 2);
    EXPECT_EQ(Next(), "Outputs/a=1.6");
    Process(1003, 1.2, 2);
    EXPECT_EQ(Next(), "none");
    Process(1004, 1.0, 2);
    EXPECT_EQ(Next(), "Outputs/a=1.0");
}

TEST_F(OutputMetricsTest, ThePeriodHoldsFramesBackAndTheLastOneFollows)
{
    Birth();
    outputs.SetRules(0, 100);
    Process(1000, 1, 2);
    Next();
    Process(1050, 3, 2);
    Process(1099, 4, 2);
    outputs.Flush(1099);
    EXPECT_EQ(Next(), "none");
    outputs.Flush(1100);
    EXPECT_EQ(Next(), "Outputs/a=4.0");
    outputs.Flush(1300);
    EXPECT_EQ(Next(), "none");
    Process(1300, 5, 2);
    EXPECT_EQ(Next(), "Outputs/a=5.0");
}

TEST_F(OutputMetricsTest, AClockThatIsSetBackDoesNotHoldFramesBack)
{
    Birth();
    outputs.SetRules(0, 100);
    Process(100'000, 1, 2);
    Next();
    Process(50'000, 2, 2);
    EXPECT_EQ(Next(), "Outputs/a=2.0");
}

TEST_F(OutputMetricsTest, AnAliasDependsOnTheNameOnly)
{
    Birth();
    std::map<uint64, std::string> const before = names;
    TextIdStandardOutputItemArgs gone;
    gone.outputId.Set("a");
    map.Remove(gone);
    Connect("c", "s/c");
    uint64 const layout = outputs.Layout();
    Birth();
    for (uint64 const alias : aliases)
    {
        EXPECT_TRUE(!before.contains(alias) || before.at(alias) == names[alias]);
    }
    outputs.Install(map); // the same map again
    EXPECT_EQ(outputs.Layout(), layout);
}

TEST_F(OutputMetricsTest, AnOutputKeepsItsReadingInAnotherMap)
{
    Birth();
    Process(1000, 1, 2);
    Next();
    Connect("c", "s/c");
    EXPECT_EQ(Birth(), "Outputs/a=1.0 Decisions/a=yes Outputs/b=2.0 Decisions/b=yes Outputs/c=null Decisions/c=no");
}

TEST_F(OutputMetricsTest, AllocatesNothingInSteadyState)
{
    Birth();
    Sample sample;
    double value = 0;
    TestFrame frames[4];
    TestBatch batch;
    for (TestFrame& frame : frames)
    {
        value += 1;
        frame.Measurement("s/a", value).Measurement("s/b", value).Stamp("s/stamp", {0, 7, 5, 0, 0});
        batch.Add(frame);
    }
    for (std::size_t i = 0; i < SampleQueue::CAPACITY; ++i)
    {
        outputs.Process(batch.List(), 1000);
        while (queue.Take(sample))
        {
        }
    }
    ZuTest::AllocationCounter const counter;
    outputs.Process(batch.List(), 1000);
    EXPECT_EQ(counter.Count(), 0U);
    EXPECT_NE(Next(), "none");
}

} // namespace SparkplugMqtt
