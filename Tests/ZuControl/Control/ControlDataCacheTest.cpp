#include "ZuControl/Control/ControlDataCache.h"

#include "Support/FailAtEachAllocation.h"
#include "Support/FakeScanEngineInterface.h"
#include "Support/FakeSystemInterface.h"
#include "Support/Latch.h"
#include "Support/RecordingSink.h"
#include "Support/Refusal.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <stdexcept>
#include <thread>

namespace ZuControl
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;

class ControlDataCacheTest : public testing::Test
{
protected:
    static constexpr uint64 LONG = 30000000;
    static constexpr char const* SYSTEM_BUSY =
        "System data cache fetch operation failed. Another operation is already in progress.";

    ControlDataCacheTest()
    {
        IControlSystemInterface::SystemStats stats;
        stats.upTime = 1;
        stats.appUpTime = 2;
        stats.loadedJob = "job";
        stats.runState = ZuCore::RunState::RUNNING;
        stats.linkStatus = {1};
        stats.linkCapacity = {1000};
        systemInterface.SetStats(stats);
        scanEngines.SetInfo({"A", 5, 6, IControlScanEngineInterface::ALIGNMENT_STATE_2, false});
    }

    /// Repeats the read until no fetch is running; a running fetch would refuse it.
    template <typename Read>
    auto WhenIdle(Read const& read)
    {
        auto const bound = std::chrono::steady_clock::now() + ZuTest::CallLog::BOUND;
        for (;;)
        {
            try
            {
                return read();
            }
            catch (Zu::Exception const& exception)
            {
                if (exception.Status() != Zu::Status::BUSY || std::chrono::steady_clock::now() > bound)
                {
                    throw;
                }
                std::this_thread::yield();
            }
        }
    }

    ZuTest::CallLog calls;
    ZuTest::LogRecorder log;
    ZuTest::FakeSystemInterface systemInterface{calls};
    ZuTest::FakeScanEngineInterface scanEngines{calls};
    ZuTest::Latch release; // this member and the next ones outlive every fetch
    ZuTest::Latch releaseSecond;
    std::atomic<int> fetches{0};
    ControlDataCache cache{systemInterface, scanEngines};
};

TEST_F(ControlDataCacheTest, GivesWhatThisVeryReadFetched)
{
    auto const stats = cache.SystemStats(LONG);
    EXPECT_EQ(stats.upTime, 1u);
    EXPECT_EQ(stats.appUpTime, 2u);
    EXPECT_EQ(stats.loadedJob, "job");
    EXPECT_EQ(stats.runState, ZuCore::RunState::RUNNING);
    EXPECT_EQ(stats.linkStatus, (std::vector<uint32>{1}));
    EXPECT_EQ(stats.linkCapacity, (std::vector<uint64>{1000}));

    auto const info = cache.ScannerInfo("A", LONG);
    EXPECT_EQ(info.currentEncoderValue, 5);
    EXPECT_EQ(info.currentSyncTime, 6u);
    EXPECT_EQ(info.alignmentState, IControlScanEngineInterface::ALIGNMENT_STATE_2);
    EXPECT_FALSE(info.laserEnabled);
    EXPECT_TRUE(log.Lines().empty());
}

TEST_F(ControlDataCacheTest, FetchesAgainWhereAReadHadNoMemory)
{
    auto const readBoth = [this] {
        cache.SystemStats(LONG);
        cache.ScannerInfo("A", LONG);
    };

    uint64 const allocations = ZuTest::FailAtEachAllocation(
        [] {}, readBoth,
        [this](bool) {
            EXPECT_EQ(WhenIdle([this] { return cache.SystemStats(LONG); }).upTime, 1u);
            EXPECT_EQ(WhenIdle([this] { return cache.ScannerInfo("A", LONG); }).currentEncoderValue, 5);
        });

    EXPECT_GT(allocations, 0u);
}

TEST_F(ControlDataCacheTest, GivesZerosUntilSomethingWasFetched)
{
    systemInterface.on["Stats"] = [this] { release.Wait(); };

    auto const stats = cache.SystemStats(0);

    EXPECT_EQ(stats.upTime, 0u);
    EXPECT_EQ(stats.loadedJob, "");
    EXPECT_TRUE(stats.linkStatus.empty());
    release.Open();
}

TEST_F(ControlDataCacheTest, GivesALaserThatIsOnUntilSomethingWasFetched)
{
    scanEngines.on["ScannerInfo()"] = [this] { release.Wait(); };

    auto const info = cache.ScannerInfo("", 0);

    EXPECT_EQ(info.currentEncoderValue, 0);
    EXPECT_EQ(info.currentSyncTime, 0u);
    EXPECT_TRUE(info.laserEnabled);
    release.Open();
}

TEST_F(ControlDataCacheTest, RefusesEitherKindWhileAFetchRuns)
{
    systemInterface.on["Stats"] = [this] { release.Wait(); };
    cache.SystemStats(0);

    EXPECT_EQ(RefusalOf([this] { cache.SystemStats(0); }), (Refusal{-976, SYSTEM_BUSY}));
    EXPECT_EQ(
        RefusalOf([this] { cache.ScannerInfo("A", 0); }),
        (Refusal{-976, "Scanner data cache fetch operation for scanner \"A\" failed. Another operation is already "
                       "in progress."}));
    release.Open();
}

TEST_F(ControlDataCacheTest, TakesALateRecordInTheNextReadAndFetchesAnew)
{
    systemInterface.on["Stats"] = [this] {
        if (++fetches == 1)
        {
            release.Wait();
        }
        else
        {
            releaseSecond.Wait();
        }
    };
    EXPECT_EQ(cache.SystemStats(0).upTime, 0u);
    release.Open();

    // The flag is cleared shortly before the record is stored, so this read or a later one returns the record.
    auto stats = WhenIdle([this] { return cache.SystemStats(50000); });

    EXPECT_EQ(stats.upTime, 1u);
    ASSERT_TRUE(calls.WaitFor("Stats", 2));
    releaseSecond.Open();
}

TEST_F(ControlDataCacheTest, NeverTakesOneScannerForAnother)
{
    cache.ScannerInfo("A", LONG);
    scanEngines.on["ScannerInfo(B)"] = [this] { release.Wait(); };

    EXPECT_EQ(RefusalOf([this] { WhenIdle([this] { return cache.ScannerInfo("B", 0); }); }),
              (Refusal{-999, "No data found for scanner B"}));
    release.Open();

    EXPECT_EQ(WhenIdle([this] { return cache.ScannerInfo("", 0); }).currentEncoderValue, 5);
}

TEST_F(ControlDataCacheTest, GivesZerosOfAScannerThatTellsNothingOnlyToWhoNamesNone)
{
    scanEngines.SetInfo({});

    EXPECT_EQ(RefusalOf([this] { cache.ScannerInfo("s", LONG); }), (Refusal{-999, "No data found for scanner s"}));
    auto const info = WhenIdle([this] { return cache.ScannerInfo("", LONG); });

    EXPECT_EQ(info.currentEncoderValue, 0);
    EXPECT_TRUE(info.laserEnabled);
}

TEST_F(ControlDataCacheTest, LogsAFailedFetchOfTheSystemAndGivesTheOldValues)
{
    cache.SystemStats(LONG);
    systemInterface.on["Stats"] = [] { throw std::runtime_error("no core"); };

    EXPECT_EQ(WhenIdle([this] { return cache.SystemStats(1000); }).upTime, 1u);
    WhenIdle([this] { return cache.ScannerInfo("", LONG); }); // on the same worker: the failed fetch has ended

    EXPECT_EQ(log.LinesWithShortTraces(),
              (std::vector{
                  ZuTest::Error("ZuControl::ControlDataCache::GetLatestSystemStats", "Exception getting system stats"),
                  ZuTest::CaughtForeign("no core"), ZuTest::BackTrace()}));
}

TEST_F(ControlDataCacheTest, SaysNothingOfAFailedFetchOfAScanner)
{
    scanEngines.on["ScannerInfo(A)"] = [] { ZU_THROW(-5, "no scanner"); };

    EXPECT_EQ(RefusalOf([this] { cache.ScannerInfo("A", 1000); }), (Refusal{-999, "No data found for scanner A"}));
    WhenIdle([this] { return cache.SystemStats(LONG); });

    EXPECT_TRUE(log.Lines().empty());
}

TEST_F(ControlDataCacheTest, WaitsAtItsEndForAFetchThatRuns)
{
    auto other = std::make_unique<ControlDataCache>(systemInterface, scanEngines);
    systemInterface.on["Stats"] = [this] {
        release.Wait();
        calls.Add("fetched");
    };
    other->SystemStats(0);
    ASSERT_TRUE(calls.WaitFor("Stats"));
    std::thread releasing([this] { release.Open(); });

    other.reset();
    releasing.join();

    EXPECT_EQ(calls.Count("fetched"), 1u);
}

TEST_F(ControlDataCacheTest, TakesReadsFromManyThreads)
{
    constexpr uint64 SHORT = 100; // a record may go to another reader; this reader then waits until its timeout
    cache.SystemStats(LONG);
    WhenIdle([this] { return cache.ScannerInfo("A", LONG); });
    std::vector<std::thread> readers;
    for (int i = 0; i < 4; ++i)
    {
        readers.emplace_back([this, i] {
            for (int k = 0; k < 100; ++k)
            {
                if (i % 2 == 0)
                {
                    EXPECT_EQ(WhenIdle([this] { return cache.SystemStats(SHORT); }).upTime, 1u);
                }
                else
                {
                    EXPECT_EQ(WhenIdle([this] { return cache.ScannerInfo("A", SHORT); }).currentSyncTime, 6u);
                }
            }
        });
    }
    for (std::thread& reader : readers)
    {
        reader.join();
    }
}

TEST_F(ControlDataCacheTest, GivesTheOldValuesWhenItsTimeIsOverAndRefusesUntilTheSlowFetchHasEnded)
{
    cache.SystemStats(LONG);
    IControlSystemInterface::SystemStats later;
    later.upTime = 9;
    systemInterface.SetStats(later);
    systemInterface.on["Stats"] = [this] { release.Wait(); };

    EXPECT_EQ(cache.SystemStats(1000).upTime, 1u);

    EXPECT_EQ(RefusalOf([this] { cache.SystemStats(1000); }), (Refusal{-976, SYSTEM_BUSY}));
    release.Open();
    EXPECT_EQ(WhenIdle([this] { return cache.SystemStats(LONG); }).upTime, 9u);
}

TEST_F(ControlDataCacheTest, NeverHoldsTwoRecordsOfAKind)
{
    // The cache reuses a record that no reader took. A second record would be refused, and the refusal logged.
    for (int i = 0; i < 200; ++i)
    {
        WhenIdle([this] { return cache.SystemStats(0); });
        WhenIdle([this] { return cache.ScannerInfo("", 0); });
    }
    WhenIdle([this] { return cache.SystemStats(LONG); });

    EXPECT_EQ(log.Lines(), std::vector<ZuTest::LogLine>{});
}

} // namespace ZuControl
