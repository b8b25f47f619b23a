#include "Host/Sensor/DeskCore.h"

#include "Host/Sensor/Sensor.h"
#include "Host/Sensor/SimulatedPart.h"
#include "Support/RecordingSink.h"
#include "ZuApi/Exception.h"
#include "ZuCore/ResultHub.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>
#include <vector>

namespace ZuHost
{

namespace
{

class DeskCoreTest : public testing::Test
{
protected:
    using Calls = std::vector<std::string>;

    DeskCoreTest()
    {
        core.ScanStartStopEvent().Add([this](bool started) { calls.push_back(started ? "started" : "stopped"); });
        core.FactoryRestoreEvent().Add([this] { calls.push_back("restored"); });
    }

    template <typename Operation>
    static int32 StatusOf(Operation operation)
    {
        try
        {
            operation();
            return Zu::Status::SUCCESS;
        }
        catch (Zu::Exception const& exception)
        {
            return exception.Status();
        }
    }

    ZuCore::ResultHub hub{true};
    Sensor sensor{hub, std::make_unique<SimulatedPart>(), 100};
    DeskCore core{sensor, false};
    Calls calls;
};

} // namespace

TEST_F(DeskCoreTest, TellsOnceOfAStartAndAStop)
{
    EXPECT_EQ(core.GetRunState(), ZuCore::RunState::READY);
    core.Stop(false);
    core.Start(true);
    core.Start(true);
    EXPECT_EQ(core.GetRunState(), ZuCore::RunState::RUNNING);
    core.Stop(false);
    core.Stop(false);

    EXPECT_EQ(core.GetRunState(), ZuCore::RunState::READY);
    EXPECT_EQ(calls, (Calls{"started", "stopped"}));
}

TEST_F(DeskCoreTest, TellsOfAStartBeforeTheFirstFrameAndOfAStopBehindTheLast)
{
    hub.AddResultHandler([this](void*) { calls.push_back("frame"); });

    core.Start(true);
    while (sensor.PublishedCount() == 0)
    {
        std::this_thread::yield();
    }
    core.Stop(false);

    EXPECT_EQ(calls.front(), "started");
    EXPECT_EQ(calls[1], "frame");
    EXPECT_EQ(calls.back(), "stopped");
}

TEST_F(DeskCoreTest, GoesOnWhenAHandlerThrows)
{
    ZuTest::LogRecorder log;
    core.ScanStartStopEvent().Add([](bool) { throw std::runtime_error("no protocol"); });

    core.Start(true);

    EXPECT_EQ(core.GetRunState(), ZuCore::RunState::RUNNING);
    EXPECT_EQ(log.CountOfText("EXCEPTION THROWN: "), 1u);
}

TEST_F(DeskCoreTest, MayBeCalledByItsHandlers)
{
    core.FactoryRestoreEvent().Add([this] { core.Start(true); });

    core.FactoryRestore();

    EXPECT_EQ(core.GetRunState(), ZuCore::RunState::RUNNING);
    EXPECT_EQ(calls, (Calls{"restored", "started"}));
}

TEST_F(DeskCoreTest, ForgetsTheNetworkSettingsWithAFactoryRestore)
{
    core.SetNextIpConfig({{192, 168, 1, 10}, {255, 255, 255, 0}, {}, false});
    core.Restart();
    core.Start(true);

    core.FactoryRestore();

    EXPECT_EQ(core.IpConfig(), wIpConfig{});
    EXPECT_EQ(core.NextIpConfig(), wIpConfig{});
    EXPECT_EQ(core.GetRunState(), ZuCore::RunState::READY);
    EXPECT_EQ(calls, (Calls{"started", "stopped", "restored"}));
}

TEST_F(DeskCoreTest, BringsTheNextNetworkSettingsIntoForceWithARestart)
{
    wIpConfig const next{{10, 0, 0, 5}, {255, 0, 0, 0}, {10, 0, 0, 1}, false};
    core.SetNextIpConfig(next);
    EXPECT_EQ(core.IpConfig(), wIpConfig{});
    core.Start(true);

    core.Restart();

    EXPECT_EQ(core.IpConfig(), next);
    EXPECT_EQ(core.GetRunState(), ZuCore::RunState::READY);
    EXPECT_EQ(calls, (Calls{"started", "stopped"}));
}

TEST_F(DeskCoreTest, ScansAgainAfterARestartWhenItScansAtPowerUp)
{
    DeskCore scanning(sensor, true);

    scanning.Restart();

    EXPECT_EQ(scanning.GetRunState(), ZuCore::RunState::RUNNING);
    scanning.Close();
    EXPECT_EQ(scanning.GetRunState(), ZuCore::RunState::READY);
}

TEST_F(DeskCoreTest, RefusesEveryOperationWhenItIsClosed)
{
    core.Start(true);

    core.Close();
    core.Close();

    EXPECT_EQ(calls, (Calls{"started", "stopped"}));
    EXPECT_EQ(StatusOf([&] { core.Start(true); }), Zu::Status::WRONG_STATE);
    EXPECT_EQ(StatusOf([&] { core.Stop(false); }), Zu::Status::WRONG_STATE);
    EXPECT_EQ(StatusOf([&] { core.FactoryRestore(); }), Zu::Status::WRONG_STATE);
    EXPECT_EQ(StatusOf([&] { core.Restart(); }), Zu::Status::WRONG_STATE);
    EXPECT_EQ(StatusOf([&] { core.SetNextIpConfig({}); }), Zu::Status::WRONG_STATE);
    EXPECT_EQ(core.GetRunState(), ZuCore::RunState::READY);
    EXPECT_EQ(calls.size(), 2u);
}

TEST_F(DeskCoreTest, TakesOperationsFromSeveralThreads)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
    {
        threads.emplace_back([this] {
            for (int round = 0; round < 25; ++round)
            {
                core.Start(true);
                core.GetRunState();
                core.SetNextIpConfig({});
                core.GetMetricsReporter().LastReport();
                core.Stop(false);
            }
        });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }

    // Each start is followed by its stop, regardless of the calling thread.
    ASSERT_EQ(calls.size() % 2, 0u);
    for (std::size_t i = 0; i < calls.size(); ++i)
    {
        EXPECT_EQ(calls[i], i % 2 == 0 ? "started" : "stopped");
    }
}

} // namespace ZuHost
