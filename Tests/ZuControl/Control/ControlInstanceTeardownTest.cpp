#include "ZuControl/Control/ControlInstance.h"

#include "Support/FakeHost.h"
#include "Support/FakeProtocol.h"
#include "Support/FakeScanEngineInterface.h"
#include "Support/FakeScanResults.h"
#include "Support/FakeSystemInterface.h"
#include "Support/FakeUpdateGate.h"
#include "Support/Latch.h"
#include "Support/RecordingSink.h"
#include "ZuCommon/Problems.h"
#include "ZuControl/Control/ControlInfo.h"
#include "ZuControl/Control/ControlProtocolOperations.h"
#include "ZuControl/ControlProtocol/ProtocolBase.h"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <thread>

namespace ZuControl
{

using Calls = ZuTest::CallLog::Calls;

namespace
{

/// A protocol that does nothing by itself. Tests send notifications in its name.
class TellingProtocol final : public ControlProtocol::ProtocolBase
{
public:
    explicit TellingProtocol(ControlProtocol::ControlProtocolEnviron const& environ)
        : ProtocolBase(ZuEthernetProtocol{9}, "Telling", environ)
    {
    }

    void ParamsUpdate() override
    {
    }

    void ResetParams() override
    {
    }

    void Start() override
    {
    }

    void Stop() override
    {
        if (stopping)
        {
            stopping();
        }
    }

    Zu::Properties::Structure& UpdateMetrics() override
    {
        return metrics;
    }

    void ResetMetrics() override
    {
    }

    /// Sends every notification of a protocol.
    void TellAll()
    {
        NotifyParamsInternalUpdateEventHandler(true);
        NotifyProtocolStatusUpdateEventHandler(ProtocolStatus::FailedToStart);
        NotifyOutputsInternalUpdateEventHandler(true);
    }

    std::function<void()> stopping;

private:
    Zu::Properties::Structure metrics{true};
};

} // namespace

class ControlInstanceTeardown : public testing::Test
{
protected:
    ControlInstanceTeardown()
    {
        environ.operations = &operations;
        environ.deployment = &deployment;
        environ.problems = &problems;
        info.SetTypeName("telling");
        protocol = std::make_shared<TellingProtocol>(environ);
        Build();
    }

    void Build()
    {
        ControlInstanceParams params{&info, &gate, &scanResults, &problems, protocol};
        instance = std::make_unique<ControlInstance>(params);
    }

    ZuTest::CallLog calls;
    ZuTest::FakeSystemInterface systemInterface{calls};
    ZuTest::FakeScanEngineInterface scanEngines{calls};
    ZuTest::FakeScanResults scanResults{calls};
    ZuTest::FakeDeployment deployment;
    ZuTest::FakeUpdateGate gate{calls};
    ZuCommon::ProblemsManager problems;
    ControlInfo info;
    ControlProtocolOperations operations{systemInterface, scanEngines};
    ControlProtocol::ControlProtocolEnviron environ;
    std::shared_ptr<TellingProtocol> protocol;
    std::unique_ptr<ControlInstance> instance;
};

TEST_F(ControlInstanceTeardown, HearsNothingMoreOfAProtocolThatTellsOnAThreadOfItsOwn)
{
    std::atomic<bool> tell{true};
    std::thread telling([&] {
        while (tell)
        {
            protocol->TellAll();
        }
    });

    for (int i = 0; i < 50; ++i)
    {
        std::atomic<int> heard{0};
        instance->AddParamsUpdatedEventHandler([&heard](std::string const&, bool) { ++heard; });
        instance->AddOutputsUpdatedEventHandler([&heard](std::string const&, bool) { ++heard; });
        while (heard < 2)
        {
            std::this_thread::yield();
        }

        instance.reset(); // destroys `heard` too

        EXPECT_EQ(problems.Count(), 0u);
        Build();
    }
    tell = false;
    telling.join();
}

TEST_F(ControlInstanceTeardown, WaitsForWhatTheProtocolIsJustTelling)
{
    ZuTest::Latch inside;
    ZuTest::Latch go;
    instance->AddParamsUpdatedEventHandler([&](std::string const&, bool) {
        inside.Open();
        go.Wait();
        calls.Add("heard");
    });
    std::thread telling([this] { protocol->NotifyParamsInternalUpdateEventHandler(true); });
    ASSERT_TRUE(inside.Wait());
    std::thread ending([&] {
        go.Open();
        instance.reset();
        calls.Add("gone");
    });

    ending.join();
    telling.join();

    EXPECT_EQ(calls.All(), (Calls{"heard", "gone"}));
}

TEST_F(ControlInstanceTeardown, LetsTwoThreadsTellSideBySide)
{
    std::latch meeting(2); // passed only if both calls are inside at the same time
    instance->AddParamsUpdatedEventHandler([&](std::string const&, bool) { meeting.arrive_and_wait(); });
    instance->AddOutputsUpdatedEventHandler([&](std::string const&, bool) { meeting.arrive_and_wait(); });

    std::thread telling([this] { protocol->NotifyParamsInternalUpdateEventHandler(true); });
    protocol->NotifyOutputsInternalUpdateEventHandler(true);
    telling.join();

    EXPECT_TRUE(meeting.try_wait());
}

TEST_F(ControlInstanceTeardown, MayEndWithinACallOfItsProtocol)
{
    instance->AddParamsUpdatedEventHandler([this](std::string const&, bool) {
        instance.reset();
        calls.Add("gone");
    });

    protocol->NotifyParamsInternalUpdateEventHandler(true);
    protocol->NotifyParamsInternalUpdateEventHandler(true);

    EXPECT_EQ(calls.All(), (Calls{"gone"}));
}

TEST_F(ControlInstanceTeardown, LetsListenersComeAndGoWhileTheProtocolTells)
{
    std::atomic<bool> tell{true};
    std::thread telling([&] {
        while (tell)
        {
            protocol->NotifyParamsInternalUpdateEventHandler(true);
            protocol->NotifyOutputsInternalUpdateEventHandler(false);
        }
    });

    for (int i = 0; i < 200; ++i)
    {
        auto const params = instance->AddParamsUpdatedEventHandler([](std::string const&, bool) {});
        auto const outputs = instance->AddOutputsUpdatedEventHandler([](std::string const&, bool) {});
        instance->RemoveParamsUpdatedEventHandler(params);
        instance->RemoveOutputsUpdatedEventHandler(outputs);
    }
    tell = false;
    telling.join();

    int heard = 0;
    instance->AddParamsUpdatedEventHandler([&heard](std::string const&, bool) { ++heard; });
    protocol->NotifyParamsInternalUpdateEventHandler(true);
    EXPECT_EQ(heard, 1);
}

TEST_F(ControlInstanceTeardown, HoldsNoLockThatAProtocolNeedsToStop)
{
    instance->Enable(true);
    std::thread telling([this] { protocol->TellAll(); });
    protocol->stopping = [&] { telling.join(); }; // would hang here

    instance->Enable(false);

    EXPECT_FALSE(instance->IsEnabled());
    EXPECT_FALSE(telling.joinable());
}

TEST(ControlInstance, IsOutOfReachForAProtocolThatKeptItsHandlers)
{
    ZuTest::CallLog calls;
    ControlInfo info;
    ZuTest::FakeUpdateGate gate(calls);
    ZuTest::FakeScanResults scanResults(calls);
    ZuCommon::ProblemsManager problems;
    auto const protocol = std::make_shared<ZuTest::FakeProtocol>(calls, 3);
    ControlInstanceParams params{&info, &gate, &scanResults, &problems, protocol};
    auto instance = std::make_unique<ControlInstance>(params);
    protocol->on["RemoveStatusHandler"] = [] { ZU_THROW(-7, "no"); };

    instance.reset();

    protocol->NotifyParamsInternalUpdateEventHandler(true); // a handler left behind would call the destroyed instance
    protocol->NotifyProtocolStatusUpdateEventHandler(ProtocolStatus::FailedToStart);
    protocol->NotifyOutputsInternalUpdateEventHandler(true);
    EXPECT_EQ(problems.Count(), 0u);
}

} // namespace ZuControl
