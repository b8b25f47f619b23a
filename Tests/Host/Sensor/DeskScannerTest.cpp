#include "Host/Sensor/DeskScanner.h"

#include "Host/Sensor/FrameCollector.h"
#include "Host/Sensor/Sensor.h"
#include "Host/Sensor/SimulatedPart.h"
#include "ZuApi/Exception.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuApi/Params/Group.h"
#include "ZuControl/Control/ControlHardware.h"
#include "ZuControl/Control/ControlHardwareManager.h"
#include "ZuControl/Control/ControlScanEngineInterface.h"
#include "ZuScan/ScanEngines.h"
#include "wApi/wTime.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <future>

namespace ZuHost
{

namespace
{

class DeskScannerTest : public testing::Test
{
protected:
    DeskScannerTest()
    {
        scanner.AddTo(manager);
    }

    ZuScan::Internal::ScannerInstance& Instance()
    {
        return manager.GetInstance("engine-0").FindScanner("scanner-0");
    }

    nlohmann::json Info()
    {
        ZuScan::IActionTarget* const actions = Instance().Scanner().ActionTarget();
        return Zu::Properties::JsonSerializer::Serialize(
            *actions->InvokeAction("scannerInfo", actions->GetActionParams("scannerInfo")));
    }

    static std::vector<std::string> IdsOf(ZuScan::IActionTarget& target)
    {
        std::vector<std::string> ids;
        for (ZuScan::ActionInfo const& info : target.ListActions())
        {
            ids.push_back(info.Id());
        }
        return ids;
    }

    ZuCore::ResultHub hub{true};
    Sensor sensor{hub, std::make_unique<SimulatedPart>(), Sensor::MIN_RATE_HZ};
    DeskScanner scanner{sensor, 1000};
    ZuScan::Internal::ScanEngineManager manager;
};

} // namespace

TEST_F(DeskScannerTest, IsTheOneScannerOfTheOneEngine)
{
    EXPECT_EQ(manager.List(), (std::vector<std::string>{"engine-0"}));
    EXPECT_EQ(manager.GetInstance("engine-0").ListScanners(), (std::vector<std::string>{"scanner-0"}));
    EXPECT_EQ(Instance().ListSensors(), (std::vector<std::string>{"sensor-0"}));
    EXPECT_EQ(&Instance().Scanner(), &scanner);
}

TEST_F(DeskScannerTest, OffersItsActionsAndCommands)
{
    EXPECT_EQ(IdsOf(*scanner.ActionTarget()), (std::vector<std::string>{"trigger", "scannerInfo"}));
    EXPECT_EQ(IdsOf(*Instance().CommandTarget()), (std::vector<std::string>{"align", "clearAlign"}));
}

TEST_F(DeskScannerTest, HasInputsAndOutputsAtItsSensorUntilAFactoryRestore)
{
    ZuControl::ControlDigitalOutput output(1, Instance().FindSensor("sensor-0"));

    output.SetControlState(true);
    EXPECT_EQ(sensor.Io().InputBits(), 2);
    scanner.RestoreFactoryState();

    EXPECT_EQ(sensor.Io().InputBits(), 0);
}

TEST_F(DeskScannerTest, AnswersInTheStampToWhatAProtocolDrives)
{
    using Kind = ZuControl::IControlHardware::ZuHardwareIOType;
    ZuTest::FrameCollector collector(hub);
    ZuControl::ControlScanEngineInterface engines(&manager);
    ZuControl::ControlHardwareManager hardware(engines);
    hardware.FindHardware();
    ASSERT_EQ(hardware.GetInterfaceCount(Kind::DIGITAL_OUTPUT), 2u);
    auto& output =
        dynamic_cast<ZuControl::ControlDigitalOutput&>(hardware.GetHardwareInterface(Kind::DIGITAL_OUTPUT, 0));

    output.SetControlState(true);
    sensor.Start();

    auto const frames = collector.WaitForFrames(1);
    ASSERT_FALSE(frames.empty());
    EXPECT_EQ(frames.front().stamp.stampStatus, 1);
}

TEST_F(DeskScannerTest, RefusesAnActionThatItDoesNotOffer)
{
    for (char const* const id : {"align", "Trigger", ""})
    {
        EXPECT_THROW(scanner.ActionTarget()->GetActionParams(id), Zu::Exception) << id;
        EXPECT_THROW(scanner.ActionTarget()->InvokeAction(id, nullptr), Zu::Exception) << id;
    }
}

TEST_F(DeskScannerTest, TakesAnExtraFrameForATriggerWhileItScans)
{
    ZuTest::FrameCollector collector(hub);
    ZuScan::IActionTarget& actions = *scanner.ActionTarget();
    EXPECT_THROW(actions.InvokeAction("trigger", actions.GetActionParams("trigger")), Zu::Exception);

    sensor.Start();
    EXPECT_EQ(actions.InvokeAction("trigger", actions.GetActionParams("trigger")), nullptr);

    EXPECT_EQ(collector.WaitForFrames(2).size(), 2u);
}

TEST_F(DeskScannerTest, TellsOfLaserEncoderAndTime)
{
    uint64 const before = wTime_NowUsec();
    nlohmann::json const stopped = Info();
    EXPECT_EQ(stopped.at("laserEnabled"), false);
    EXPECT_EQ(stopped.at("currentEncoderValue"), 0);
    // The reader converts the value to microseconds: times 1000, divided by 1024.
    uint64 const time = stopped.at("currentSyncTime").get<uint64>() * 1000 / 1024;
    EXPECT_GE(time + 1, before);
    EXPECT_LE(time, wTime_NowUsec());

    ZuTest::FrameCollector collector(hub);
    sensor.Start();
    sensor.Trigger();
    sensor.Trigger();
    ASSERT_EQ(collector.WaitForFrames(3).size(), 3u);
    EXPECT_EQ(Info().at("laserEnabled"), true);
    sensor.Stop();

    EXPECT_EQ(Info().at("currentEncoderValue"), 20);
    EXPECT_EQ(Info().at("laserEnabled"), false);
}

TEST_F(DeskScannerTest, AlignsAndTakesTheAlignmentBack)
{
    std::promise<ZuScan::AlignCompletionStatus> completed;
    scanner.AlignmentCompletedEvent().Add([&](ZuScan::AlignCompletionStatus status) { completed.set_value(status); });
    ZuScan::ICommandTarget& commands = *Instance().CommandTarget();

    commands.InvokeAction("align", commands.GetActionParams("align"));

    auto end = completed.get_future();
    ASSERT_EQ(end.wait_for(std::chrono::seconds(10)), std::future_status::ready);
    EXPECT_EQ(end.get(), ZuScan::AlignCompletionStatus::SUCCESS);
    EXPECT_EQ(scanner.GetAlignState(), ZuScan::AlignState::ALIGNED);
    commands.InvokeAction("clearAlign", commands.GetActionParams("clearAlign"));
    EXPECT_EQ(scanner.GetAlignState(), ZuScan::AlignState::NOT_ALIGNED);
}

} // namespace ZuHost
