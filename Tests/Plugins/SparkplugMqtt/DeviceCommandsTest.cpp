#include "Plugins/SparkplugMqtt/DeviceCommands.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace SparkplugMqtt
{

using namespace ZuControl::ControlProtocol;

TEST(InterpretCommand, TakesEachCommandByNameAndByAlias)
{
    struct Case
    {
        CommandMetric metric;
        std::string name;
        ControlRegisterCommandId id;
        std::string argument;
    };
    Case const cases[] = {
        {{"Command/Start", {}, true}, "Command/Start", CommandStart, ""},
        {{"Command/Stop", {}, true}, "Command/Stop", CommandStop, ""},
        {{"Command/Align", {}, true}, "Command/Align", CommandAlign, ""},
        {{"Command/Clear Alignment", {}, true}, "Command/Clear Alignment", CommandClearAlign, ""},
        {{"Command/Trigger", {}, true}, "Command/Trigger", CommandSoftwareTrigger, ""},
        {{"Command/Load Job", {}, "line7"}, "Command/Load Job", CommandLoadJob, "line7"},
        {{"", 11, true}, "Command/Start", CommandStart, ""},
        {{"", 16, "j"}, "Command/Load Job", CommandLoadJob, "j"},
    };
    for (Case const& one : cases)
    {
        EXPECT_EQ(InterpretCommand({{"Command/Request Id", {}, uint64{7}}, one.metric}),
                  (DeviceCommand{7, one.name, one.id, one.argument, ""}));
        EXPECT_EQ(InterpretCommand({one.metric, {"", 10, uint64{7}}}),
                  (DeviceCommand{7, one.name, one.id, one.argument, ""}));
    }
}

TEST(InterpretCommand, FindsNoCommandInValuesOfRest)
{
    EXPECT_EQ(InterpretCommand({}), DeviceCommand{});
    EXPECT_EQ(InterpretCommand({{"Command/Start", {}, false}, {"Command/Stop", {}, false}}), DeviceCommand{});
    EXPECT_EQ(InterpretCommand({{"Command/Request Id", {}, uint64{3}}}).name, "");
}

TEST(InterpretCommand, RefusesWithAReason)
{
    struct Case
    {
        std::vector<CommandMetric> metrics;
        std::string name;
        std::string refusal;
    };
    Case const cases[] = {
        {{{"Outputs/zMax", {}, 1.0}}, "Outputs/zMax", "There is no writable metric Outputs/zMax"},
        {{{"", 9, true}}, "alias 9", "There is no writable metric alias 9"},
        {{{"", {}, true}}, "alias 0", "There is no writable metric alias 0"},
        {{{"Command/Start", {}, uint64{1}}}, "Command/Start", "Command/Start takes no value of this type"},
        {{{"Command/Start", {}, std::monostate{}}}, "Command/Start", "Command/Start takes no value of this type"},
        {{{"Command/Start", {}, "true"}}, "Command/Start", "Command/Start takes no value of this type"},
        {{{"Command/Load Job", {}, true}}, "Command/Load Job", "Command/Load Job takes no value of this type"},
        {{{"Command/Load Job", {}, ""}}, "Command/Load Job", "A load needs the name of a job"},
        {{{"Command/Load Job", {}, std::string(64, 'j')}},
         "Command/Load Job",
         "The name of a job has at most 63 bytes"},
        {{{"Command/Request Id", {}, "1"}}, "Command/Request Id", "Command/Request Id takes no value of this type"},
        {{{"Command/Start", {}, true}, {"Command/Stop", {}, true}},
         "Command/Start",
         "A message has one command at most"},
        {{{"Command/Start", {}, true}, {"Command/Dance", {}, true}},
         "Command/Start",
         "There is no writable metric Command/Dance"},
    };
    for (Case const& one : cases)
    {
        DeviceCommand const command = InterpretCommand(one.metrics);
        EXPECT_EQ(command.name, one.name);
        EXPECT_EQ(command.refusal, one.refusal);
    }
}

TEST(WriteCommands, OffersEachCommandOnceWithAnAliasOfItsOwn)
{
    MetricWriter writer(4096);
    std::vector<uint64> aliases;
    WriteCommands(writer, 5, aliases);
    WriteResult(writer, {3, "Command/Start", CommandStatusFailed, "busy"}, 5, true, aliases);
    EXPECT_EQ(aliases, (std::vector<uint64>{10, 11, 12, 13, 14, 15, 16, 20, 21, 22, 23}));
    std::vector<CommandMetric> metrics;
    ASSERT_TRUE(DecodeCommand(writer.Bytes(), metrics));
    ASSERT_EQ(metrics.size(), 11U);
    EXPECT_EQ(metrics[1], (CommandMetric{"Command/Start", 11, false}));
    EXPECT_EQ(metrics[6], (CommandMetric{"Command/Load Job", 16, ""}));
    EXPECT_EQ(metrics[7], (CommandMetric{"Result/Request Id", 20, uint64{3}}));
    EXPECT_EQ(metrics[10], (CommandMetric{"Result/Text", 23, "busy"}));
}

TEST(WriteResult, WritesDataWithoutNames)
{
    MetricWriter writer(4096);
    std::vector<uint64> aliases;
    WriteResult(writer, {3, "Command/Start", CommandStatusDone, ""}, 5, false, aliases);
    EXPECT_EQ(aliases, std::vector<uint64>{});
    std::vector<CommandMetric> metrics;
    ASSERT_TRUE(DecodeCommand(writer.Bytes(), metrics));
    EXPECT_EQ(metrics,
              (std::vector<CommandMetric>{
                  {"", 20, uint64{3}}, {"", 21, "Command/Start"}, {"", 22, uint64{CommandStatusDone}}, {"", 23, ""}}));
}

} // namespace SparkplugMqtt
