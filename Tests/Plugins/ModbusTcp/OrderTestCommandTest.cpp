#include "Plugins/ModbusTcp/OrderTestCommand.h"
#include "Plugins/ModbusTcp/OrderDiagnosis.h"
#include "Support/Refusal.h"
#include "Tests/Plugins/ModbusTcp/BlockFixture.h"
#include "ZuApi/JsonSerializer.h"

#include <nlohmann/json.hpp>

#include <string>

namespace ModbusTcp
{

using Zu::Properties::JsonSerializer;
using ZuTest::Refusal;
using ZuTest::RefusalOf;

class OrderTestCommandTest : public BlockFixture
{
protected:
    nlohmann::json Ask(nlohmann::json const& arguments)
    {
        auto const params = command.GetActionParams("orderTest");
        JsonSerializer::Deserialize(*params, arguments);
        return JsonSerializer::Serialize(*command.InvokeAction("orderTest", *params));
    }

    OrderTestCommand command{assembly};
};

TEST_F(OrderTestCommandTest, AsksTheBlockInTheMap)
{
    Place("OrderTest", 300);
    nlohmann::json const answer = Ask({{"address", 302}, {"type", "UDINT"}, {"shown", "47335830"}});

    EXPECT_EQ(answer.at("isRight"), false);
    EXPECT_EQ(answer.at("masterOrder"), "CDAB");
    EXPECT_EQ(answer.at("answer").get<std::string>().find("Your master swaps the words of 32 bit values"), 0u);
}

TEST_F(OrderTestCommandTest, KnowsTheOrderOfTheServiceAndOfTheBlock)
{
    Place("OrderTest", 300);
    Place("OrderTest", 400, "", "BADC");
    assembly.ChangeBigEndianSupportedBlocks(false);

    EXPECT_EQ(Ask({{"address", 302}, {"type", "UDINT"}, {"shown", "1234567890"}}).at("masterOrder"), "CDAB");
    EXPECT_EQ(Ask({{"address", 402}, {"type", "UDINT"}, {"shown", "1234567890"}}).at("masterOrder"), "BADC");
}

TEST_F(OrderTestCommandTest, RefusesATextThatIsTooLongAndAMapWithoutTheBlock)
{
    EXPECT_EQ(RefusalOf([&] { Ask({{"address", 300}, {"shown", "1"}}); }).status, Zu::Status::WRONG_STATE);
    Place("OrderTest", 300);
    EXPECT_EQ(RefusalOf([&] {
                  Ask({{"address", 300}, {"shown", std::string(257, '1')}});
              }),
              (Refusal{Zu::Status::BAD_ARGUMENT, "\"shown\" has more than 256 bytes"}));
}

TEST_F(OrderTestCommandTest, IsTheOnlyCommand)
{
    ASSERT_EQ(command.ListActions().size(), 1u);
    EXPECT_EQ(command.ListActions()[0].Id(), "orderTest");
    EXPECT_EQ(RefusalOf([&] { command.GetActionParams("jump"); }),
              (Refusal{Zu::Status::NOT_FOUND, "The action 'jump' does not exist. No parameters available"}));
    EXPECT_EQ(RefusalOf([&] { command.InvokeAction("jump", OrderTestParams()); }),
              (Refusal{Zu::Status::NOT_FOUND, "The action 'jump' does not exist. Action ignored."}));
}

} // namespace ModbusTcp
