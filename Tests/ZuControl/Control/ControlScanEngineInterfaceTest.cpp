#include "ZuControl/Control/ControlScanEngineInterface.h"

#include "Support/CallLog.h"
#include "Support/RecordingSink.h"
#include "Support/Refusal.h"
#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "ZuScan/ScanEngines.h"
#include "ZuScan/Sensor.h"

#include <gtest/gtest.h>

namespace ZuControl
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;

namespace
{

struct InfoResult final : Zu::Params::Group
{
    InfoResult()
    {
        Register("currentSyncTime", currentSyncTime);
        currentSyncTime.Set(1024);
    }

    Zu::Params::Value<uint64> currentSyncTime;
};

class FakeTarget final : public ZuScan::ICommandTarget
{
public:
    std::vector<ZuScan::ActionInfo> ListActions() const override
    {
        std::vector<ZuScan::ActionInfo> list;
        for (std::string const& action : actions)
        {
            list.emplace_back(action);
        }
        return list;
    }

    std::shared_ptr<Zu::Params::Group> GetActionParams(std::string const& /*id*/) const override
    {
        return params;
    }

    std::shared_ptr<Zu::Params::Group> InvokeAction(std::string const& id,
                                                    std::shared_ptr<Zu::Params::Group> given) override
    {
        EXPECT_EQ(given, params);
        calls.Add(id);
        return result;
    }

    std::vector<std::string> actions;
    std::shared_ptr<Zu::Params::Group> const params = std::make_shared<Zu::Params::Group>();
    std::shared_ptr<Zu::Params::Group> result;
    ZuTest::CallLog calls;
};

class FakeScanner final : public ZuScan::IScanner
{
public:
    ZuScan::IActionTarget* ActionTarget() override
    {
        return hasActions ? &actions : nullptr;
    }

    Zu::Event<ZuScan::AlignCompletionStatus>& AlignmentCompletedEvent() override
    {
        return event;
    }

    ZuScan::AlignState GetAlignState() override
    {
        return state;
    }

    bool hasActions = true;
    FakeTarget actions;
    FakeTarget commands;
    Zu::Event<ZuScan::AlignCompletionStatus> event;
    ZuScan::AlignState state{2};
};

class FakeSensor final : public ZuScan::ISensor
{
public:
    ZuScan::ICommandTarget* CommandTarget() override
    {
        return nullptr;
    }
};

} // namespace

class ControlScanEngineInterfaceTest : public testing::Test
{
protected:
    static constexpr char const* TRIGGER = "ZuControl::ControlScanEngineInterface::SoftwareTrigger";
    static constexpr char const* ALIGN = "ZuControl::ControlScanEngineInterface::AlignmentCommandHelper";

    void AddFirst(bool withCommands = true)
    {
        manager.AddEngine("empty");
        manager.AddEngine("A").AddScanner("a", first, withCommands ? &first.commands : nullptr);
    }

    ZuScan::Internal::ScanEngineManager manager;
    FakeScanner first;
    FakeScanner second;
    FakeSensor sensor;
    ControlScanEngineInterface engines{&manager};
    ZuTest::LogRecorder log;
};

TEST_F(ControlScanEngineInterfaceTest, TriggersTheFirstScannerOfTheFirstEngineThatHasOne)
{
    AddFirst();
    first.actions.actions = {"other", "trigger"};

    engines.SoftwareTrigger("");

    EXPECT_EQ(first.actions.calls.All(), (ZuTest::CallLog::Calls{"trigger"}));
    EXPECT_EQ(log.Lines(), (std::vector{ZuTest::Info(TRIGGER, "Attempting software trigger for scanner a")}));
}

TEST_F(ControlScanEngineInterfaceTest, TakesTheNameOfAnActionExactly)
{
    AddFirst();
    first.actions.actions = {"Trigger", "trigger "};

    EXPECT_EQ(RefusalOf([this] { engines.SoftwareTrigger(""); }),
              (Refusal{-998, "Software trigger operation is not supported by scanner a"}));

    EXPECT_EQ(log.LinesWithShortTraces(),
              (std::vector{ZuTest::Info(TRIGGER, "Attempting software trigger for scanner a"),
                           ZuTest::Error(TRIGGER, "Failed to initiate software trigger operation for scanner "),
                           ZuTest::CaughtEntry(-998, "Software trigger operation is not supported by scanner a"),
                           ZuTest::BackTrace()}));
}

TEST_F(ControlScanEngineInterfaceTest, AlignsAndClearsThroughCommands)
{
    AddFirst();
    first.commands.actions = {"align", "clearAlign"};

    engines.Alignment("a");
    engines.ClearAlignment("");

    EXPECT_EQ(first.commands.calls.All(), (ZuTest::CallLog::Calls{"align", "clearAlign"}));
    EXPECT_EQ(log.Lines(), (std::vector{ZuTest::Info(ALIGN, "Attempting alignment for scanner a"),
                                        ZuTest::Info(ALIGN, "Attempting clear alignment for scanner a")}));
}

TEST_F(ControlScanEngineInterfaceTest, RefusesWhatAScannerDoesNotOffer)
{
    AddFirst();

    EXPECT_EQ(RefusalOf([this] { engines.Alignment("a"); }), (Refusal{-998, "No support for alignment by scanner a"}));
    EXPECT_EQ(RefusalOf([this] { engines.ClearAlignment(""); }),
              (Refusal{-998, "No support for clear alignment by scanner a"}));

    EXPECT_EQ(
        log.LinesWithShortTraces(),
        (std::vector{ZuTest::Info(ALIGN, "Attempting alignment for scanner a"),
                     ZuTest::Error(ALIGN, "Failed alignment for scanner a"),
                     ZuTest::CaughtEntry(-998, "No support for alignment by scanner a"), ZuTest::BackTrace(),
                     ZuTest::Info(ALIGN, "Attempting clear alignment for scanner a"),
                     ZuTest::Error(ALIGN, "Failed clear alignment for scanner "),
                     ZuTest::CaughtEntry(-998, "No support for clear alignment by scanner a"), ZuTest::BackTrace()}));
}

TEST_F(ControlScanEngineInterfaceTest, RefusesAScannerWithoutTargets)
{
    AddFirst(false);
    first.hasActions = false;

    EXPECT_EQ(RefusalOf([this] { engines.SoftwareTrigger(""); }), (Refusal{-996, "No actions supported by scanner a"}));
    EXPECT_EQ(RefusalOf([this] { engines.Alignment(""); }), (Refusal{-996, "No commands supported by scanner a"}));

    EXPECT_EQ(log.LinesWithShortTraces(),
              (std::vector{ZuTest::Error(TRIGGER, "Failed to initiate software trigger operation for scanner "),
                           ZuTest::CaughtEntry(-996, "No actions supported by scanner a"), ZuTest::BackTrace(),
                           ZuTest::Error(ALIGN, "Failed alignment for scanner "),
                           ZuTest::CaughtEntry(-996, "No commands supported by scanner a"), ZuTest::BackTrace()}));
}

TEST_F(ControlScanEngineInterfaceTest, SearchesTheFirstUsableEngineOnly)
{
    AddFirst();
    manager.AddEngine("B").AddScanner("b", second, nullptr);

    EXPECT_EQ(&engines.AlignmentCompletedEvent("a"), &first.event);
    EXPECT_THROW(engines.AlignmentCompletedEvent("b"), Zu::Exception);

    EXPECT_EQ(log.LinesWithoutTraces(),
              (std::vector{ZuTest::Error("ZuControl::ControlScanEngineInterface::AlignmentCompletedEvent",
                                         "Failed to get alignment complete event for scanner b")}));
}

TEST_F(ControlScanEngineInterfaceTest, SaysWhichEnginesAreMissing)
{
    IControlScanEngineInterface::ScannerStateInfo info;
    EXPECT_EQ(RefusalOf([&] { engines.ScannerInfo("", info); }), (Refusal{-999, "No scan engines found"}));
    EXPECT_EQ(RefusalOf([this] { engines.FindSupportedSensor(); }), (Refusal{-999, "No scan engines found."}));
    manager.AddEngine("empty");

    EXPECT_EQ(RefusalOf([&] { engines.ScannerInfo("", info); }), (Refusal{-999, "No usable scan engines found"}));

    EXPECT_TRUE(log.Lines().empty());
}

TEST_F(ControlScanEngineInterfaceTest, RefusesWithoutAManager)
{
    ControlScanEngineInterface none(nullptr);

    EXPECT_EQ(RefusalOf([&] { none.FindSupportedSensor(); }),
              (Refusal{-1000, "Scan engine manager reference is uninitialized."}));
    EXPECT_THROW(none.SoftwareTrigger(""), Zu::Exception);
}

TEST_F(ControlScanEngineInterfaceTest, ReadsTheStateOfAScanner)
{
    AddFirst();
    first.actions.actions = {"scannerInfo"};
    first.actions.result = std::make_shared<InfoResult>();
    IControlScanEngineInterface::ScannerStateInfo info;
    info.laserEnabled = false;

    engines.ScannerInfo("", info);

    EXPECT_EQ(info.id, "a");
    EXPECT_EQ(info.alignmentState, 2);
    EXPECT_EQ(info.currentSyncTime, 1000u);
    EXPECT_TRUE(info.laserEnabled);
    EXPECT_TRUE(log.Lines().empty());
}

TEST_F(ControlScanEngineInterfaceTest, LeavesTheRecordOfAScannerThatTellsNothing)
{
    AddFirst();
    IControlScanEngineInterface::ScannerStateInfo info;
    info.id = "mine";
    info.currentEncoderValue = 5;

    engines.ScannerInfo("a", info);

    EXPECT_EQ(info.id, "mine");
    EXPECT_EQ(info.currentEncoderValue, 5);
}

TEST_F(ControlScanEngineInterfaceTest, RefusesAnAnswerThatIsNone)
{
    AddFirst();
    first.actions.actions = {"scannerInfo"};
    IControlScanEngineInterface::ScannerStateInfo info;

    EXPECT_EQ(RefusalOf([&] { engines.ScannerInfo("a", info); }), (Refusal{-998, "Scanner a gave no information"}));
}

TEST_F(ControlScanEngineInterfaceTest, TakesAnAlignStateThatItDoesNotKnowForNone)
{
    AddFirst();
    first.actions.actions = {"scannerInfo"};
    first.actions.result = std::make_shared<Zu::Params::Group>();
    first.state = ZuScan::AlignState{3};
    IControlScanEngineInterface::ScannerStateInfo info;

    engines.ScannerInfo("a", info);

    EXPECT_EQ(info.alignmentState, 0);
    EXPECT_EQ(log.Lines(), (std::vector{ZuTest::Error("ZuControl::ControlScanEngineInterface::MapScannerAlignState",
                                                      "The scan align state 3 read from scanner is invalid")}));
}

TEST_F(ControlScanEngineInterfaceTest, FindsTheFirstSensor)
{
    manager.AddEngine("empty");
    auto& engine = manager.AddEngine("A");
    engine.AddScanner("a", first, nullptr);
    engine.AddScanner("b", second, nullptr).AddSensor("s", sensor);

    EXPECT_EQ(engines.FindSupportedSensor(), &sensor);
}

TEST_F(ControlScanEngineInterfaceTest, FindsNoSensorWhereThereIsNone)
{
    AddFirst();

    EXPECT_EQ(engines.FindSupportedSensor(), nullptr);

    EXPECT_EQ(log.Lines(), (std::vector{ZuTest::Error("ZuControl::ControlScanEngineInterface::FindSupportedSensor",
                                                      "No usable sensors found.")}));
}

TEST_F(ControlScanEngineInterfaceTest, LooksForTheScannersOfALaterEngineOnTheFirst)
{
    AddFirst();
    manager.AddEngine("B").AddScanner("b", second, nullptr).AddSensor("s", sensor);

    EXPECT_EQ(RefusalOf([this] { engines.FindSupportedSensor(); }),
              (Refusal{-999, [this] {
                           try
                           {
                               manager.GetInstance("A").FindScanner("b");
                           }
                           catch (Zu::Exception const& exception)
                           {
                               return std::string(exception.what());
                           }
                           return std::string();
                       }()}));
}

} // namespace ZuControl
