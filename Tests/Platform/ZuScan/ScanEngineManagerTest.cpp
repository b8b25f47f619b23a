#include "ZuScan/ScanEngines.h"

#include "ZuApi/Exception.h"
#include "ZuScan/Sensor.h"

#include <gtest/gtest.h>

namespace ZuScan::Internal
{

namespace
{

class FakeScanner final : public IScanner
{
public:
    IActionTarget* ActionTarget() override
    {
        return nullptr;
    }

    Zu::Event<AlignCompletionStatus>& AlignmentCompletedEvent() override
    {
        return event;
    }

    AlignState GetAlignState() override
    {
        return AlignState::ALIGNED;
    }

private:
    Zu::Event<AlignCompletionStatus> event;
};

class FakeSensor final : public ISensor
{
public:
    ICommandTarget* CommandTarget() override
    {
        return nullptr;
    }
};

template <typename Call>
void ExpectRefusal(Call call, int32 status, char const* text)
{
    try
    {
        call();
        ADD_FAILURE() << "nothing was thrown; expected: " << text;
    }
    catch (Zu::Exception const& exception)
    {
        EXPECT_EQ(exception.Status(), status);
        EXPECT_STREQ(exception.what(), text);
    }
}

} // namespace

using Ids = std::vector<std::string>;

TEST(ScanEngineManager, ListsAndFindsInOrderOfAddition)
{
    FakeScanner scanner;
    FakeSensor left;
    FakeSensor right;
    ScanEngineManager manager;
    manager.AddEngine("b");
    auto& engine = manager.AddEngine("a");
    auto& instance = engine.AddScanner("scanner-0", scanner, nullptr);
    instance.AddSensor("right", right);
    instance.AddSensor("left", left);

    EXPECT_EQ(manager.List(), (Ids{"b", "a"}));
    EXPECT_EQ(&manager.GetInstance("a"), &engine);
    EXPECT_EQ(engine.Id(), "a");
    EXPECT_EQ(engine.ListScanners(), Ids{"scanner-0"});
    EXPECT_EQ(&engine.FindScanner("scanner-0"), &instance);
    EXPECT_EQ(&instance.Scanner(), &scanner);
    EXPECT_EQ(instance.CommandTarget(), nullptr);
    EXPECT_EQ(instance.ListSensors(), (Ids{"right", "left"}));
    EXPECT_EQ(&instance.FindSensor("left"), &left);
    EXPECT_TRUE(manager.GetInstance("b").ListScanners().empty());
}

TEST(ScanEngineManager, RefusesWhatIsNotThere)
{
    FakeScanner scanner;
    ScanEngineManager manager;
    auto& engine = manager.AddEngine("e");
    auto& instance = engine.AddScanner("s", scanner, nullptr);

    ExpectRefusal([&] { manager.GetInstance("x"); }, Zu::Status::NOT_FOUND, "There is no scan engine x");
    ExpectRefusal([&] { engine.FindScanner("x"); }, Zu::Status::NOT_FOUND, "Scan engine e has no scanner x");
    ExpectRefusal([&] { instance.FindSensor("x"); }, Zu::Status::NOT_FOUND, "Scanner s has no sensor x");
}

TEST(ScanEngineManager, RefusesIdsThatAreTaken)
{
    FakeScanner scanner;
    FakeSensor sensor;
    ScanEngineManager manager;
    auto& engine = manager.AddEngine("e");
    auto& instance = engine.AddScanner("s", scanner, nullptr);
    instance.AddSensor("n", sensor);

    ExpectRefusal([&] { manager.AddEngine("e"); }, Zu::Status::ALREADY_EXISTS, "There is a scan engine e already");
    ExpectRefusal([&] { engine.AddScanner("s", scanner, nullptr); }, Zu::Status::ALREADY_EXISTS,
                  "Scan engine e has a scanner s already");
    ExpectRefusal([&] { instance.AddSensor("n", sensor); }, Zu::Status::ALREADY_EXISTS,
                  "Scanner s has a sensor n already");
    EXPECT_EQ(instance.ListSensors(), Ids{"n"});
}

} // namespace ZuScan::Internal
