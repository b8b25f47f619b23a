#include "ZuControl/Control/ControlSystemInterface.h"

#include "Support/CallLog.h"
#include "Support/Refusal.h"
#include "ZuApi/Properties/Value.h"
#include "ZuApi/Structure.h"
#include "ZuCommon/Metrics.h"
#include "ZuCommon/Persistence.h"
#include "ZuCore/Core.h"

#include <gtest/gtest.h>

namespace ZuControl
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;

namespace
{

class FakeReporter final : public ZuCommon::IMetricsReporter<>, public ZuCommon::IMetricsSource
{
public:
    FakeReporter()
    {
        metrics.Register("upTime", upTime);
        upTime.Set(12);
    }

    ZuCommon::IMetricsSource const& LastReport() override
    {
        if (failing)
        {
            ZU_THROW(Zu::Status::NOT_OFFERED, "no report");
        }
        return *this;
    }

    CallbackId AddReportHandler(ReportHandler /*handler*/) override
    {
        return {};
    }

    void RemoveReportHandler(CallbackId /*id*/) override
    {
    }

    Zu::Properties::Structure const& GetMetrics() const override
    {
        return metrics;
    }

    bool failing = false;

private:
    Zu::Properties::Value<uint64> upTime;
    Zu::Properties::Structure metrics{true};
};

class FakeCore final : public ZuCore::Core
{
public:
    void Start(bool userRequest) override
    {
        calls.Add(userRequest ? "Start(true)" : "Start(false)");
    }

    void Stop(bool force) override
    {
        calls.Add(force ? "Stop(true)" : "Stop(false)");
    }

    void FactoryRestore() override
    {
        calls.Add("FactoryRestore");
    }

    void Restart() override
    {
        calls.Add("Restart");
    }

    void SetNextIpConfig(wIpConfig const& config) override
    {
        calls.Add("SetNextIpConfig(" + std::to_string(config.address[0]) + ")");
    }

    ZuCore::RunState GetRunState() override
    {
        return ZuCore::RunState::RUNNING;
    }

    ZuCommon::IMetricsReporter<>& GetMetricsReporter() override
    {
        return reporter;
    }

    ZuTest::CallLog calls;
    FakeReporter reporter;
};

} // namespace

TEST(ControlSystemInterface, HandsEveryOperationOn)
{
    FakeCore core;
    ZuCommon::PersistManager jobs({"one"});
    ControlSystemInterface system(&core, &jobs);
    wIpConfig config;
    config.address = {10, 0, 0, 1};

    system.Start();
    system.Stop();
    system.FactoryRestore();
    system.Restart();
    system.SetNextIpConfig(config);
    system.LoadJob("one");

    EXPECT_EQ(core.calls.All(), (ZuTest::CallLog::Calls{"Start(true)", "Stop(false)", "FactoryRestore", "Restart",
                                                        "SetNextIpConfig(10)"}));
    EXPECT_EQ(jobs.LoadedJob(), "one");
}

TEST(ControlSystemInterface, FillsRunStateAndJobBeforeTheReport)
{
    FakeCore core;
    ZuCommon::PersistManager jobs({"one"});
    jobs.LoadJob("one");
    ControlSystemInterface system(&core, &jobs);
    IControlSystemInterface::SystemStats stats;

    system.Stats(stats);
    EXPECT_EQ(stats.upTime, 12u);
    EXPECT_EQ(stats.appUpTime, 18446744073709551615u);

    core.reporter.failing = true;
    IControlSystemInterface::SystemStats partly;
    EXPECT_EQ(RefusalOf([&] { system.Stats(partly); }), (Refusal{-998, "no report"}));
    EXPECT_EQ(partly.runState, ZuCore::RunState::RUNNING);
    EXPECT_EQ(partly.loadedJob, "one");
    EXPECT_EQ(partly.upTime, 0u);
}

TEST(ControlSystemInterface, RefusesWhatNeedsACoreOrJobsThatAreNotThere)
{
    ControlSystemInterface system(nullptr, nullptr);

    EXPECT_EQ(RefusalOf([&] { system.Start(); }), (Refusal{-1000, "Core reference is uninitialized."}));
    EXPECT_EQ(RefusalOf([&] { system.LoadJob("one"); }),
              (Refusal{-1000, "Persist manager reference is uninitialized."}));
}

} // namespace ZuControl
