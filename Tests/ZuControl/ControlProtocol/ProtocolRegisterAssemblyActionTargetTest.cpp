#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyActionTarget.h"

#include "Support/RecordingSink.h"
#include "Support/Refusal.h"
#include "Support/RegisterBlocks.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "ZuControl/ControlProtocol/RegisterBlockParams.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <typeinfo>

namespace ZuControl::ControlProtocol
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;

class ProtocolRegisterAssemblyActionTargetTest : public testing::Test
{
protected:
    ProtocolRegisterAssemblyActionTargetTest()
    {
        assembly.AddSupportedBlockType(std::make_unique<ProtocolRegisterBlockInfo>(ZuTest::TypeParams("T", 4)));
    }

    /// Runs an action with arguments from JSON and returns its result.
    nlohmann::json Invoke(std::string const& action, nlohmann::json const& arguments)
    {
        args = target.GetActionParams(action);
        Zu::Properties::JsonSerializer::Deserialize(*args, arguments);
        std::shared_ptr<Zu::Params::Group> const result = target.InvokeAction(action, *args);
        return result == nullptr ? nlohmann::json("null") : Zu::Properties::JsonSerializer::Serialize(*result);
    }

    nlohmann::json Document(std::string const& action)
    {
        return Zu::Properties::JsonSerializer::Serialize(*target.GetActionParams(action));
    }

    nlohmann::json Schema(std::string const& action)
    {
        return PropertiesOf(*target.GetActionParams(action));
    }

    static nlohmann::json PropertiesOf(Zu::Params::Group const& record)
    {
        return Zu::Properties::JsonSerializer::SerializeSchema(record).at("properties");
    }

    ProtocolRegisterAssemblyBase assembly{true, 100, 199};
    ProtocolRegisterAssemblyActionTarget target{assembly};
    std::shared_ptr<Zu::Params::Group> args;
    nlohmann::json const empty = nlohmann::json::object();
};

TEST_F(ProtocolRegisterAssemblyActionTargetTest, ListsFourActionsInOrder)
{
    std::vector<std::pair<std::string, std::string>> listed;
    for (ControlActionInfo const& action : target.ListActions())
    {
        listed.emplace_back(action.Id(), action.DisplayName());
    }

    EXPECT_EQ(listed, (std::vector<std::pair<std::string, std::string>>{
                          {"add", "Add"}, {"remove", "Remove"}, {"compact", "Compact"}, {"update", "Update"}}));
}

TEST_F(ProtocolRegisterAssemblyActionTargetTest, GivesArgumentsAtTheirDefaults)
{
    EXPECT_EQ(Document("add"), (nlohmann::json{{"blocks", nlohmann::json::array()}, {"autoShift", false}}));
    EXPECT_EQ(Document("remove"), (nlohmann::json{{"outputIdList", nlohmann::json::array()}}));
    EXPECT_EQ(Document("compact"), (nlohmann::json{{"startingOutputId", 65535}}));
    EXPECT_EQ(Document("update"),
              (nlohmann::json{
                  {"outputId", 65535},
                  {"autoShift", false},
                  {"newParams", {{"dataSource", ""}, {"scannerId", ""}, {"displayName", ""}, {"outputId", 65535}}}}));
    EXPECT_EQ(Zu::Properties::JsonSerializer::Serialize(RegisterBlockParams()),
              (nlohmann::json{
                  {"type", ""}, {"dataSource", ""}, {"scannerId", ""}, {"displayName", ""}, {"outputId", 65535}}));
}

TEST_F(ProtocolRegisterAssemblyActionTargetTest, DescribesItsArguments)
{
    using nlohmann::json;
    json const flag{{"type", "boolean"}, {"title", "Auto Shift Blocks On Output id Overlap"}, {"sortOrder", 100}};
    auto const text = [](char const* title, int sortOrder) {
        return json{{"type", "string"}, {"title", title}, {"sortOrder", sortOrder}};
    };
    auto const id = [](char const* title, int sortOrder) {
        return json{{"type", "integer"}, {"title", title}, {"sortOrder", sortOrder}, {"minimum", 0}};
    };
    auto const list = [](char const* title) {
        return json{{"type", "array"}, {"title", title}, {"sortOrder", 0}, {"items", json::array()}};
    };

    EXPECT_EQ(Schema("add"), (json{{"blocks", list("Register Block Parameters List")}, {"autoShift", flag}}));
    EXPECT_EQ(Schema("remove"), (json{{"outputIdList", list("Output Id List")}}));
    EXPECT_EQ(Schema("compact"), (json{{"startingOutputId", id("Starting Output Id", 0)}}));
    json const newParams{{"dataSource", text("Data Source", 0)},
                         {"scannerId", text("Scanner Id", 100)},
                         {"displayName", text("Display Name", 200)},
                         {"outputId", id("Output Id", 300)}};
    EXPECT_EQ(Schema("update"), (json{{"outputId", id("Output Id", 0)},
                                      {"autoShift", flag},
                                      {"newParams",
                                       {{"type", "object"},
                                        {"title", "New Parameters For Output Id"},
                                        {"sortOrder", 200},
                                        {"properties", newParams}}}}));
    EXPECT_EQ(PropertiesOf(RegisterBlockIdParams()), (json{{"outputId", id("Output Id", 0)}}));
    EXPECT_EQ(PropertiesOf(RegisterBlockParams()), (json{{"type", text("Register Block Type", 0)},
                                                         {"dataSource", text("Scan Output Data Source", 100)},
                                                         {"scannerId", text("Scanner Id", 200)},
                                                         {"displayName", text("Display Name", 300)},
                                                         {"outputId", id("Output Id", 400)}}));
}

TEST_F(ProtocolRegisterAssemblyActionTargetTest, RunsEachActionAndGivesAnEmptyResult)
{
    EXPECT_EQ(Invoke("add", {{"blocks", {{{"type", "T"}}, {{"type", "T"}}, {{"type", "T"}}}}}), empty);
    EXPECT_EQ(Invoke("remove", {{"outputIdList", {{{"outputId", 100}}}}}), empty);
    EXPECT_EQ(Invoke("compact", empty), empty);
    EXPECT_EQ(Invoke("update", {{"outputId", 104}, {"newParams", {{"outputId", 150}}}}), empty);

    assembly.BeginLock();
    EXPECT_EQ(assembly.AddedRegisterBlocks().size(), 2u);
    EXPECT_EQ(assembly.AddedRegisterBlocks().front()->OutputId(), 100);
    EXPECT_EQ(assembly.AddedRegisterBlocks().back()->OutputId(), 150);
    assembly.EndLock();
}

TEST_F(ProtocolRegisterAssemblyActionTargetTest, FillsTheCallersRecord)
{
    Invoke("add", {{"blocks", {{{"type", "T"}}}}});

    nlohmann::json const block = Zu::Properties::JsonSerializer::Serialize(*args).at("blocks").at(0);
    EXPECT_EQ(block.at("outputId"), 100);
    EXPECT_EQ(block.at("displayName"), "T name");
}

TEST_F(ProtocolRegisterAssemblyActionTargetTest, PassesOnThatNothingWasAdded)
{
    ZuTest::LogRecorder log;

    EXPECT_EQ(RefusalOf([&] {
                  Invoke("add", {{"blocks", {{{"type", "x"}}, {{"type", ""}}}}});
              }),
              (Refusal{0, "No register blocks were added."}));

    EXPECT_EQ(log.Lines(),
              (std::vector<ZuTest::LogLine>{
                  ZuTest::UserWarning(
                      "Cannot add block. The type or size of the x block is incompatible with this protocol."),
                  ZuTest::UserWarning(
                      "Cannot add block. Register block type must be specified in order to add a register block.")}));
}

TEST_F(ProtocolRegisterAssemblyActionTargetTest, LogsAnUnknownActionThatIsAskedForArguments)
{
    for (std::string const action : {"Add", "x", ""})
    {
        ZuTest::LogRecorder log;

        EXPECT_EQ(RefusalOf([&] { target.GetActionParams(action); }), (Refusal{-999, ""}));

        EXPECT_EQ(log.Lines(),
                  (std::vector<ZuTest::LogLine>{ZuTest::UserInfo("The action '" + action + "' does not exist.")}));
    }
}

TEST_F(ProtocolRegisterAssemblyActionTargetTest, RefusesAnUnknownActionWithoutALine)
{
    ZuTest::LogRecorder log;

    EXPECT_EQ(RefusalOf([&] { target.InvokeAction("Add", *target.GetActionParams("add")); }), (Refusal{-999, ""}));

    EXPECT_EQ(log.Lines().size(), 0u);
}

TEST_F(ProtocolRegisterAssemblyActionTargetTest, PassesOnTheBadCastOfAnotherRecord)
{
    for (char const* const action : {"add", "remove", "compact", "update"})
    {
        EXPECT_THROW(target.InvokeAction(action, RegisterBlockParams()), std::bad_cast) << action;
    }
}

} // namespace ZuControl::ControlProtocol
