#include "Plugins/Common/StateFetcher.h"
#include "Support/RecordingSink.h"
#include "Tests/Plugins/Common/FakeDataCache.h"
#include "ZuCommon/Problems.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

namespace PluginCommon
{

class StateFetcherTest : public testing::Test
{
protected:
    void Serve(uint64 upTime, std::string const& job = "default.zpjob")
    {
        ZuControl::IControlDataCache::DataCacheSystemStats stats;
        stats.upTime = upTime;
        stats.runState = ZuCore::RunState{1};
        stats.loadedJob = job;
        stats.linkStatus = {300, 2};
        ZuControl::IControlDataCache::DataCacheScannerInfo info;
        info.currentEncoderValue = -5;
        info.currentSyncTime = 77;
        info.alignmentState = ZuControl::IControlScanEngineInterface::ALIGNMENT_STATE_2;
        info.laserEnabled = false;
        cache.Set(stats, info);
    }

    /// Repeats the question until it returns this up-time, with a bound.
    bool BecomesUpTime(uint64 upTime)
    {
        auto const latest = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (std::chrono::steady_clock::now() < latest)
        {
            if (fetcher.Latest("").system.value64 == upTime)
            {
                return true;
            }
            std::this_thread::yield();
        }
        return false;
    }

    FakeDataCache cache;
    ZuCommon::ProblemsManager problems;
    StateFetcher fetcher{"Test.State", cache, problems};
};

TEST_F(StateFetcherTest, GivesTheStateOfSystemAndScanner)
{
    Serve(1234);
    problems.Add(1, "Test", "one");
    problems.Add(1, "Test", "two");
    fetcher.Start();
    fetcher.SetHasClients(true);

    ASSERT_TRUE(BecomesUpTime(1234));
    ASSERT_TRUE(cache.calls.WaitFor("ScannerInfo()", 2));

    StateFetcher::State const state = fetcher.Latest("");
    EXPECT_EQ(state.system.stateByte0, 1);
    EXPECT_EQ(std::string(state.system.jobFileName, state.system.jobFileNameLength), "default.zpjob");
    EXPECT_EQ(state.system.stateByte2, 255); // 300 does not fit
    EXPECT_EQ(state.system.stateByte3, 2);
    EXPECT_EQ(state.scanner.encoderValue, -5);
    EXPECT_EQ(state.scanner.syncTime, 77u);
    EXPECT_EQ(state.scanner.scannerByte0, 2);
    EXPECT_EQ(state.scanner.scannerByte1, 0);
}

TEST_F(StateFetcherTest, CutsAJobNameToWhatTheBlockHolds)
{
    Serve(1, std::string(100, 'n'));
    fetcher.Start();
    fetcher.SetHasClients(true);

    ASSERT_TRUE(BecomesUpTime(1));

    StateFetcher::SystemState const system = fetcher.Latest("").system;
    EXPECT_EQ(system.jobFileNameLength, 64);
    EXPECT_EQ(std::string(system.jobFileName, 64), std::string(64, 'n'));
}

TEST_F(StateFetcherTest, FollowsTheSourcesWhileSomebodyAsks)
{
    Serve(1);
    fetcher.Start();
    fetcher.SetHasClients(true);
    ASSERT_TRUE(BecomesUpTime(1));

    Serve(2);

    EXPECT_TRUE(BecomesUpTime(2));
}

TEST_F(StateFetcherTest, AsksForTheScannerThatIsWanted)
{
    fetcher.Start();
    fetcher.SetHasClients(true);

    fetcher.Latest("scanner-7");

    EXPECT_TRUE(cache.calls.WaitFor("ScannerInfo(scanner-7)"));
}

TEST_F(StateFetcherTest, FetchesNothingWithoutClients)
{
    fetcher.Start();

    fetcher.Latest("nobody");
    fetcher.Latest("first");
    fetcher.SetHasClients(true);

    // If the first question had started a fetch, that fetch would have run before this one.
    ASSERT_TRUE(cache.calls.WaitFor("ScannerInfo(first)"));
    EXPECT_EQ(cache.calls.Count("ScannerInfo(nobody)"), 0u);
}

TEST_F(StateFetcherTest, KeepsTheLastStateWhenTheSourcesFailAndTellsItOnce)
{
    Serve(5);
    fetcher.Start();
    fetcher.SetHasClients(true);
    ASSERT_TRUE(BecomesUpTime(5));
    ZuTest::LogRecorder log;

    cache.SetFailure(-998);
    Serve(6);
    std::size_t const asked = cache.calls.Count("SystemStats");
    fetcher.Latest("");
    ASSERT_TRUE(cache.calls.WaitFor("SystemStats", asked + 4));

    EXPECT_EQ(fetcher.Latest("").system.value64, 5u);
    EXPECT_EQ(log.CountOfText("Unable to fetch the state of the system"), 1u);
}

TEST_F(StateFetcherTest, IsSilentWhileAnotherProtocolFetches)
{
    ZuTest::LogRecorder log;
    cache.SetFailure(-976);
    fetcher.Start();
    fetcher.SetHasClients(true);

    ASSERT_TRUE(cache.calls.WaitFor("SystemStats", 3));
    cache.SetFailure(0);
    Serve(9);

    EXPECT_TRUE(BecomesUpTime(9));
    EXPECT_TRUE(log.Lines().empty());
}

TEST_F(StateFetcherTest, StopsAtOnceAndStartsAgain)
{
    fetcher.Start();
    fetcher.SetHasClients(true);
    ASSERT_TRUE(cache.calls.WaitFor("SystemStats"));

    fetcher.Stop();
    cache.calls.Clear();
    EXPECT_EQ(fetcher.Latest("").system.value64, 0u);
    fetcher.Start();

    EXPECT_TRUE(cache.calls.WaitFor("SystemStats"));
}

} // namespace PluginCommon
