#include "Host/Sensor/Sensor.h"

#include "Host/Sensor/FrameCollector.h"
#include "Host/Sensor/SimulatedPart.h"
#include "Support/RecordingSink.h"
#include "ZuApi/Exception.h"
#include "wApi/wTime.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <limits>
#include <thread>

namespace ZuHost
{

namespace
{

/// Returns one point; its z is the frame number. Can be made to block or to throw.
class FakeSource final : public IProfileSource
{
public:
    struct Control
    {
        std::mutex lock; // guards the members below
        std::condition_variable changed;
        bool isClosed = false;
        bool isWaiting = false;
        bool isBroken = false;

        void Close(bool closed)
        {
            {
                std::scoped_lock const guard(lock);
                isClosed = closed;
            }
            changed.notify_all();
        }

        bool WaitForReader()
        {
            std::unique_lock guard(lock);
            return changed.wait_for(guard, std::chrono::seconds(10), [this] { return isWaiting; });
        }

        void Break(bool broken)
        {
            std::scoped_lock const guard(lock);
            isBroken = broken;
        }
    };

    explicit FakeSource(Control& sharedControl) : control(sharedControl)
    {
    }

    SharedProfile ProfileAt(uint64 frame) override
    {
        std::unique_lock guard(control.lock);
        control.isWaiting = control.isClosed;
        control.changed.notify_all();
        control.changed.wait_for(guard, std::chrono::seconds(10), [this] { return !control.isClosed; });
        control.isWaiting = false;
        if (control.isBroken)
        {
            ZU_THROW(Zu::Status::NOT_OFFERED, "the line is dark");
        }
        return std::make_shared<Profile const>(Profile{{0, static_cast<double>(frame)}});
    }

    LineRange Line() const override
    {
        return {};
    }

private:
    Control& control;
};

int32 StatusOfTrigger(Sensor& sensor)
{
    try
    {
        sensor.Trigger();
        return Zu::Status::SUCCESS;
    }
    catch (Zu::Exception const& exception)
    {
        return exception.Status();
    }
}

class SensorTest : public testing::Test
{
protected:
    std::unique_ptr<Sensor> MakeSensor(double rateHz)
    {
        return std::make_unique<Sensor>(hub, std::make_unique<FakeSource>(control), rateHz);
    }

    FakeSource::Control control;
    ZuCore::ResultHub hub{true};
    ZuTest::FrameCollector collector{hub};
};

constexpr double ONE_IN_A_THOUSAND_SECONDS = Sensor::MIN_RATE_HZ;

} // namespace

TEST_F(SensorTest, RefusesARateThatIsNone)
{
    for (double const rateHz : {-1.0, 0.0009, 100'001.0, std::numeric_limits<double>::quiet_NaN()})
    {
        EXPECT_THROW(MakeSensor(rateHz), Zu::Exception) << rateHz;
    }
}

TEST_F(SensorTest, PublishesNothingUntilItIsStarted)
{
    auto const sensor = MakeSensor(1000);

    EXPECT_FALSE(sensor->IsScanning());
    EXPECT_EQ(StatusOfTrigger(*sensor), Zu::Status::WRONG_STATE);
    sensor->Stop();
    EXPECT_EQ(collector.Count(), 0u);
}

TEST_F(SensorTest, StampsTheLevelsOfTheDigitalInputs)
{
    auto const sensor = MakeSensor(ONE_IN_A_THOUSAND_SECONDS);
    sensor->Start();
    ASSERT_EQ(collector.WaitForFrames(1).size(), 1u);

    sensor->Io().UseDigitalOutput(1, [](DeskDigitalOutput& output, uint64) { output.SetState(true); });
    sensor->Trigger();
    ASSERT_EQ(collector.WaitForFrames(2).size(), 2u);
    sensor->Io().UseDigitalOutput(0, [](DeskDigitalOutput& output, uint64) { output.SetState(true); });
    sensor->Trigger();

    auto const frames = collector.WaitForFrames(3);
    ASSERT_EQ(frames.size(), 3u);
    EXPECT_EQ(frames[0].stamp.stampStatus, 0);
    EXPECT_EQ(frames[1].stamp.stampStatus, 2);
    EXPECT_EQ(frames[2].stamp.stampStatus, 3);
}

TEST_F(SensorTest, StampsFrameAfterFrameFromZero)
{
    auto const sensor = MakeSensor(2000);
    uint64 const before = wTime_NowUsec();

    sensor->Start();
    auto const frames = collector.WaitForFrames(20);
    sensor->Stop();

    ASSERT_GE(frames.size(), 20u);
    uint64 last = before;
    for (std::size_t i = 0; i < 20; ++i)
    {
        wStamp const& stamp = frames[i].stamp;
        EXPECT_EQ(stamp.stampStatus, 0);
        EXPECT_EQ(stamp.stampValue, static_cast<int64>(stamp.stampCounter));
        EXPECT_EQ(stamp.stampEncoder, static_cast<int64>(stamp.stampCounter) * 10);
        EXPECT_GE(stamp.stampTime, last);
        EXPECT_EQ(frames[i].results[1].value, static_cast<double>(stamp.stampCounter)); // one profile, one set
        last = stamp.stampTime;
    }
    EXPECT_EQ(frames[0].stamp.stampCounter, 0u);
    EXPECT_LE(last, wTime_NowUsec());
}

TEST_F(SensorTest, PublishesNoFrameAfterAStopAndBeginsAnewWithTheNextStart)
{
    auto const sensor = MakeSensor(2000);
    sensor->Start();
    sensor->Start(); // no second thread
    collector.WaitForFrames(3);

    sensor->Stop();
    std::size_t const count = collector.Count();
    EXPECT_EQ(sensor->PublishedCount(), count);
    EXPECT_FALSE(sensor->IsScanning());
    sensor->Start();
    auto const frames = collector.WaitForFrames(count + 2);

    ASSERT_GE(frames.size(), count + 2);
    EXPECT_EQ(frames[count].stamp.stampCounter, 0u);
    EXPECT_TRUE(sensor->IsScanning());
}

TEST_F(SensorTest, TakesNoFrameBeforeItIsDue)
{
    auto const sensor = MakeSensor(1000);
    uint64 const before = wTime_NowUsec();

    sensor->Start();
    auto const frames = collector.WaitForFrames(200);
    sensor->Stop();

    ASSERT_GE(frames.size(), 200u);
    for (auto const& frame : frames)
    {
        EXPECT_GE(frame.stamp.stampTime, before + frame.stamp.stampCounter * 1000);
    }
    EXPECT_EQ(sensor->PublishedCount() + sensor->MissedCount(),
              collector.WaitForFrames(1).back().stamp.stampCounter + 1);
}

TEST_F(SensorTest, LeavesOutAndCountsTheFramesThatItMissed)
{
    auto const sensor = MakeSensor(1000);
    control.Close(true);
    sensor->Start();
    ASSERT_TRUE(control.WaitForReader()); // the source blocks at frame 0
    uint64 const hungSince = wTime_NowUsec();
    while (wTime_NowUsec() - hungSince < 3 * Sensor::MAX_LAG_USEC) // the test is about the lag, so it has to pass
    {
        std::this_thread::yield();
    }

    control.Close(false);
    auto const frames = collector.WaitForFrames(2);
    sensor->Stop();

    ASSERT_GE(frames.size(), 2u);
    EXPECT_EQ(frames[0].stamp.stampCounter, 0u);
    EXPECT_GE(frames[1].stamp.stampCounter, 250u);
    EXPECT_GE(sensor->MissedCount(), 250u);
    EXPECT_EQ(sensor->PublishedCount() + sensor->MissedCount(),
              collector.WaitForFrames(1).back().stamp.stampCounter + 1);
}

TEST_F(SensorTest, GivesOneExtraFrameForATrigger)
{
    auto const sensor = MakeSensor(ONE_IN_A_THOUSAND_SECONDS);
    sensor->Start();
    ASSERT_EQ(collector.WaitForFrames(1).size(), 1u);

    sensor->Trigger();
    sensor->Trigger();

    auto const frames = collector.WaitForFrames(3);
    ASSERT_EQ(frames.size(), 3u);
    EXPECT_EQ(frames[2].stamp.stampCounter, 2u);
    sensor->Stop();
    EXPECT_EQ(collector.Count(), 3u);
    EXPECT_EQ(StatusOfTrigger(*sensor), Zu::Status::WRONG_STATE);
}

TEST_F(SensorTest, RefusesMoreTriggersThanItKeeps)
{
    auto const sensor = MakeSensor(ONE_IN_A_THOUSAND_SECONDS);
    control.Close(true);
    sensor->Start();
    ASSERT_TRUE(control.WaitForReader());

    for (uint64 i = 0; i < Sensor::MAX_PENDING_TRIGGERS; ++i)
    {
        EXPECT_EQ(StatusOfTrigger(*sensor), Zu::Status::SUCCESS);
    }

    EXPECT_EQ(StatusOfTrigger(*sensor), Zu::Status::FULL);
    control.Close(false);
    EXPECT_EQ(collector.WaitForFrames(65).size(), 65u);
}

TEST_F(SensorTest, WaitsAtRateZeroForTheConsumersToLetSetsGo)
{
    collector.Keep(true);
    auto const sensor = MakeSensor(0);
    sensor->Start();
    ASSERT_EQ(collector.WaitForFrames(Sensor::MAX_SETS_ALIVE).size(), Sensor::MAX_SETS_ALIVE);

    sensor->Stop(); // stops the sensor while it waits for room

    EXPECT_EQ(collector.Count(), Sensor::MAX_SETS_ALIVE);
    sensor->Start(); // the sets in use still count
    sensor->Stop();
    EXPECT_EQ(collector.Count(), Sensor::MAX_SETS_ALIVE);
    sensor->Start();
    collector.Keep(false);
    EXPECT_GT(collector.WaitForFrames(500).size(), 500u - 1);
    sensor->Stop();
}

TEST_F(SensorTest, ReportsAFailureAndCanBeStartedAgain)
{
    ZuTest::LogRecorder log;
    auto const sensor = MakeSensor(1000);
    control.Break(true);

    sensor->Start();
    uint64 const deadlineUsec = wTime_AfterUsec(10'000'000);
    while (!sensor->HasFailed() && wTime_NowUsec() < deadlineUsec)
    {
        std::this_thread::yield();
    }

    EXPECT_TRUE(sensor->HasFailed());
    EXPECT_EQ(StatusOfTrigger(*sensor), Zu::Status::WRONG_STATE);
    EXPECT_EQ(log.CountOfText("EXCEPTION THROWN: "), 1u);
    control.Break(false);
    sensor->Start();
    EXPECT_FALSE(sensor->HasFailed());
    EXPECT_GE(collector.WaitForFrames(2).size(), 2u);
}

TEST_F(SensorTest, IsNotStoppedByWhoHandlesItsResults)
{
    auto const sensor = MakeSensor(ONE_IN_A_THOUSAND_SECONDS);
    std::promise<int32> status;
    auto const id = hub.AddResultHandler([&](void*) {
        try
        {
            sensor->Stop();
            status.set_value(Zu::Status::SUCCESS);
        }
        catch (Zu::Exception const& exception)
        {
            status.set_value(exception.Status());
        }
    });

    sensor->Start();

    EXPECT_EQ(status.get_future().get(), Zu::Status::WRONG_STATE);
    sensor->Stop();
    hub.RemoveResultHandler(id);
}

TEST_F(SensorTest, MayBeStartedStoppedAndTriggeredFromSeveralThreads)
{
    auto const sensor = MakeSensor(10'000);
    std::vector<std::thread> threads;

    for (int i = 0; i < 4; ++i)
    {
        threads.emplace_back([&] {
            for (int round = 0; round < 50; ++round)
            {
                sensor->Start();
                StatusOfTrigger(*sensor);
                sensor->EncoderValue();
                sensor->Stop();
            }
        });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }

    EXPECT_FALSE(sensor->IsScanning());
}

} // namespace ZuHost
