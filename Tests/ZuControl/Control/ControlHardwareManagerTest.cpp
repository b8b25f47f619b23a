#include "ZuControl/Control/ControlHardwareManager.h"

#include "Support/FakeScanEngineInterface.h"
#include "Support/FakeSensor.h"
#include "Support/RecordingSink.h"
#include "Support/Refusal.h"
#include "ZuControl/Control/ControlHardware.h"
#include "ZuStdScanners/ZucSensor/IoRecords.h"

#include <gtest/gtest.h>

#include <thread>
#include <typeinfo>

namespace ZuControl
{

using Kind = IControlHardware::ZuHardwareIOType;
using Kinds = std::list<Kind>;
using Calls = ZuTest::CallLog::Calls;
using ZuTest::Info;
using ZuTest::Refusal;
using ZuTest::RefusalOf;

class ControlHardwareManagerTest : public testing::Test
{
protected:
    ControlHardwareManagerTest()
    {
        scanEngines.sensor = &sensor;
        sensor.on["queryIoOutputCount"] = [this](Zu::Params::Group const& params) {
            auto const& query = dynamic_cast<ZuStdScanners::ZucSensor::QueryIoOutputCountParams const&>(params);
            return CountOf(static_cast<int>(query.ioType.Get()));
        };
    }

    ZuTest::FakeSensor::Result CountOf(int kind)
    {
        if (onQuery)
        {
            onQuery(kind);
        }
        auto result = std::make_shared<ZuStdScanners::ZucSensor::QueryIoOutputCountResult>();
        result->count.Set(counts[kind]);
        return result;
    }

    std::vector<uint64> Counts() const
    {
        return {manager.GetInterfaceCount(Kind{1}), manager.GetInterfaceCount(Kind{2}),
                manager.GetInterfaceCount(Kind{3}), manager.GetInterfaceCount(Kind{4})};
    }

    Refusal RefusedLookup(Kind kind, uint64 index)
    {
        return RefusalOf([&] { manager.GetHardwareInterface(kind, index); });
    }

    void UpdateAllHardwareLists()
    {
        manager.UpdateAllHardwareLists(sensor);
    }

    void ClearAllHardwareLists()
    {
        manager.ClearAllHardwareLists();
    }

    static constexpr char const* REFRESH = "ZuControl::ControlHardwareManager::Refresh";
    static constexpr char const* UPDATE = "ZuControl::ControlHardwareManager::UpdateHardwareList";

    ZuTest::CallLog calls;
    ZuTest::LogRecorder log;
    ZuTest::FakeSensor sensor{calls};
    ZuTest::FakeScanEngineInterface scanEngines{calls};
    ControlHardwareManager manager{scanEngines};
    std::map<int, uint64> counts{{1, 2}, {2, 1}, {3, 2}, {4, 2}};
    std::function<void(int kind)> onQuery;
};

TEST_F(ControlHardwareManagerTest, IsEmptyAndAsksNobodyAtFirst)
{
    EXPECT_EQ(manager.SupportedHardwareInterfaces(), Kinds{});
    EXPECT_EQ(Counts(), (std::vector<uint64>{0, 0, 0, 0}));
    EXPECT_EQ(RefusedLookup(Kind{1}, 0), (Refusal{-999, ""}));
    EXPECT_EQ(calls.All(), Calls{});
    EXPECT_TRUE(log.Lines().empty());
}

TEST_F(ControlHardwareManagerTest, AsksTheSensorForEachKindInOrder)
{
    manager.FindHardware();

    EXPECT_EQ(calls.All(), (Calls{"FindSupportedSensor()", R"(queryIoOutputCount {"ioType":1})",
                                  R"(queryIoOutputCount {"ioType":2})", R"(queryIoOutputCount {"ioType":3})",
                                  R"(queryIoOutputCount {"ioType":4})"}));
    EXPECT_EQ(Counts(), (std::vector<uint64>{2, 1, 2, 2}));
    EXPECT_EQ(manager.SupportedHardwareInterfaces(), (Kinds{Kind{1}, Kind{2}, Kind{3}, Kind{4}}));
    EXPECT_EQ(log.Lines(),
              (std::vector{Info(UPDATE, "type:1, interfaceCount:2"), Info(UPDATE, "type:2, interfaceCount:1"),
                           Info(UPDATE, "type:3, interfaceCount:2"), Info(UPDATE, "type:4, interfaceCount:2")}));
}

TEST_F(ControlHardwareManagerTest, MakesAnObjectOfEachKindAtEachIndex)
{
    manager.FindHardware();
    calls.Clear();

    dynamic_cast<ControlAnalogOutput&>(manager.GetHardwareInterface(Kind{1}, 1)).SetControlId(0);
    dynamic_cast<ControlSerialOutput&>(manager.GetHardwareInterface(Kind{2}, 0)).Write("");
    dynamic_cast<ControlDigitalOutput&>(manager.GetHardwareInterface(Kind{3}, 0)).Trigger();
    dynamic_cast<ControlDigitalOutput&>(manager.GetHardwareInterface(Kind{3}, 1)).Trigger();
    dynamic_cast<ControlDigitalInput&>(manager.GetHardwareInterface(Kind{4}, 1)).ClearSettings();

    EXPECT_EQ(calls.All(),
              (Calls{R"(analogOutSetControlId {"controlId":0,"index":1})",
                     R"(serialOutWrite {"buffer":"","index":0,"size":0})", R"(digitalOutTrigger {"index":0})",
                     R"(digitalOutTrigger {"index":1})", R"(digitalInClear {"index":1})"}));
}

TEST_F(ControlHardwareManagerTest, RefusesAnIndexBehindTheLast)
{
    manager.FindHardware();

    for (int kind = 1; kind <= 4; ++kind)
    {
        EXPECT_EQ(RefusedLookup(Kind(kind), counts[kind]), (Refusal{-999, ""})) << kind;
        EXPECT_EQ(RefusedLookup(Kind(kind), ~uint64{0}), (Refusal{-999, ""})) << kind;
        EXPECT_EQ(manager.GetInterfaceCount(Kind(kind)), counts[kind]) << kind;
    }
}

TEST_F(ControlHardwareManagerTest, RefusesWhatIsNoKind)
{
    manager.FindHardware();

    for (Kind const kind : {Kind{0}, Kind{5}, Kind{255}})
    {
        EXPECT_EQ(RefusedLookup(kind, 0), (Refusal{-997, ""}));
        EXPECT_EQ(RefusedLookup(kind, 99), (Refusal{-997, ""}));
        EXPECT_EQ(RefusalOf([&] { manager.GetInterfaceCount(kind); }), (Refusal{-999, ""}));
    }
}

TEST_F(ControlHardwareManagerTest, LeavesOutAKindOfWhichThereIsNone)
{
    counts[2] = 0;

    manager.FindHardware();

    EXPECT_EQ(manager.SupportedHardwareInterfaces(), (Kinds{Kind{1}, Kind{3}, Kind{4}}));
}

TEST_F(ControlHardwareManagerTest, GivesACopyOfTheKinds)
{
    manager.FindHardware();
    Kinds kinds = manager.SupportedHardwareInterfaces();

    kinds.clear();

    EXPECT_EQ(manager.SupportedHardwareInterfaces().size(), 4u);
}

TEST_F(ControlHardwareManagerTest, AddsEverythingASecondTime)
{
    manager.FindHardware();
    IControlHardware* const first = &manager.GetHardwareInterface(Kind{1}, 0);

    manager.FindHardware();

    EXPECT_EQ(Counts(), (std::vector<uint64>{4, 2, 4, 4}));
    EXPECT_EQ(manager.SupportedHardwareInterfaces(),
              (Kinds{Kind{1}, Kind{2}, Kind{3}, Kind{4}, Kind{1}, Kind{2}, Kind{3}, Kind{4}}));
    EXPECT_EQ(&manager.GetHardwareInterface(Kind{1}, 0), first);
    calls.Clear();
    dynamic_cast<ControlDigitalOutput&>(manager.GetHardwareInterface(Kind{3}, 3)).Trigger();
    EXPECT_EQ(calls.All(), (Calls{R"(digitalOutTrigger {"index":1})"}));
}

TEST_F(ControlHardwareManagerTest, IsEmptyOnceCleared)
{
    manager.FindHardware();

    ClearAllHardwareLists();

    EXPECT_EQ(Counts(), (std::vector<uint64>{0, 0, 0, 0}));
    EXPECT_EQ(manager.SupportedHardwareInterfaces(), Kinds{});
}

TEST_F(ControlHardwareManagerTest, StaysAsItIsWithoutASensor)
{
    manager.FindHardware();
    scanEngines.sensor = nullptr;
    calls.Clear();

    manager.FindHardware();

    EXPECT_EQ(Counts(), (std::vector<uint64>{2, 1, 2, 2}));
    EXPECT_EQ(calls.All(), (Calls{"FindSupportedSensor()"}));
}

TEST_F(ControlHardwareManagerTest, KeepsWhatCameBeforeAKindThatFails)
{
    onQuery = [](int kind) {
        if (kind == 3)
        {
            ZU_THROW(-993, "the sensor is silent");
        }
    };

    manager.FindHardware();

    EXPECT_EQ(Counts(), (std::vector<uint64>{2, 1, 0, 0}));
    EXPECT_EQ(manager.SupportedHardwareInterfaces(), Kinds{});
    EXPECT_EQ(log.LinesWithShortTraces(),
              (std::vector{Info(UPDATE, "type:1, interfaceCount:2"), Info(UPDATE, "type:2, interfaceCount:1"),
                           ZuTest::Error(REFRESH, "Exception thrown in refreshing hardware mappings"),
                           ZuTest::CaughtEntry(-993, "the sensor is silent"), ZuTest::BackTrace()}));
}

TEST_F(ControlHardwareManagerTest, KeepsTheKindsItHadWhenALaterAnswerFails)
{
    manager.FindHardware();
    onQuery = [](int kind) {
        if (kind == 4)
        {
            ZU_THROW(-993);
        }
    };

    manager.FindHardware();

    EXPECT_EQ(Counts(), (std::vector<uint64>{4, 2, 4, 2}));
    EXPECT_EQ(manager.SupportedHardwareInterfaces(), (Kinds{Kind{1}, Kind{2}, Kind{3}, Kind{4}}));
}

TEST_F(ControlHardwareManagerTest, EndsAtTheFirstKindForWhichTheSensorTakesNoCommands)
{
    onQuery = [this](int kind) { sensor.takesCommands = kind < 2; };

    manager.FindHardware();

    EXPECT_EQ(Counts(), (std::vector<uint64>{2, 1, 0, 0}));
    EXPECT_EQ(manager.SupportedHardwareInterfaces(), Kinds{});
    EXPECT_EQ(log.LinesWithShortTraces(),
              (std::vector{Info(UPDATE, "type:1, interfaceCount:2"), Info(UPDATE, "type:2, interfaceCount:1"),
                           ZuTest::Error(REFRESH, "Exception thrown in refreshing hardware mappings"),
                           ZuTest::CaughtEntry(-1000, ""), ZuTest::BackTrace()}));
}

TEST_F(ControlHardwareManagerTest, SaysInTheLogThatNoSensorCanBeLookedFor)
{
    scanEngines.on["FindSupportedSensor()"] = [] { ZU_THROW(-999, "No scan engines found."); };

    manager.FindHardware();

    EXPECT_EQ(log.LinesWithShortTraces(),
              (std::vector{ZuTest::Error(REFRESH, "Exception thrown in refreshing hardware mappings"),
                           ZuTest::CaughtEntry(-999, "No scan engines found."), ZuTest::BackTrace()}));
}

TEST_F(ControlHardwareManagerTest, PassesOnWhatIsNoExceptionOfOurs)
{
    sensor.on["queryIoOutputCount"] = [](Zu::Params::Group const&) { return std::make_shared<Zu::Params::Group>(); };

    EXPECT_THROW(manager.FindHardware(), std::bad_cast);

    EXPECT_EQ(Counts(), (std::vector<uint64>{0, 0, 0, 0}));
    EXPECT_TRUE(log.Lines().empty());
}

TEST_F(ControlHardwareManagerTest, AsksAGivenSensorWithoutCatching)
{
    onQuery = [](int kind) {
        if (kind == 2)
        {
            ZU_THROW(-993, "the sensor is silent");
        }
    };

    EXPECT_EQ(RefusalOf([this] { UpdateAllHardwareLists(); }), (Refusal{-993, "the sensor is silent"}));
    EXPECT_EQ(Counts(), (std::vector<uint64>{2, 0, 0, 0}));

    onQuery = nullptr;
    UpdateAllHardwareLists();
    EXPECT_EQ(Counts(), (std::vector<uint64>{4, 1, 2, 2}));
    EXPECT_EQ(manager.SupportedHardwareInterfaces(), (Kinds{Kind{1}, Kind{2}, Kind{3}, Kind{4}}));
}

TEST_F(ControlHardwareManagerTest, IsLookedUpByManyThreadsAtOnce)
{
    constexpr int ROUNDS = 200;
    manager.FindHardware();
    calls.Clear();
    std::vector<std::thread> readers;
    for (int reader = 0; reader < 4; ++reader)
    {
        readers.emplace_back([this] {
            for (int round = 0; round < ROUNDS; ++round)
            {
                for (Kind const kind : manager.SupportedHardwareInterfaces())
                {
                    manager.GetHardwareInterface(kind, manager.GetInterfaceCount(kind) - 1).Enable(true);
                }
            }
        });
    }
    for (std::thread& reader : readers)
    {
        reader.join();
    }

    EXPECT_EQ(calls.Count(R"(enableIoOutputAt {"enable":true,"index":0,"ioType":2})"), 4u * ROUNDS);
    EXPECT_EQ(calls.All().size(), 4u * 4u * ROUNDS);
}

} // namespace ZuControl
