#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyActionTarget.h"

#include "Support/RecordingSink.h"
#include "Support/Refusal.h"
#include "Support/RegisterBlocks.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuControl/ControlProtocol/AddBlockParams.h"
#include "ZuControl/ControlProtocol/CompactBlocksParams.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "ZuControl/ControlProtocol/RemoveBlockParams.h"
#include "ZuControl/ControlProtocol/UpdateBlockParams.h"

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

    /// Runs an action with arguments from JSON, gives its result.
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
        return Zu::Properties::JsonSerializer::SerializeSchema(*target.GetActionParams(action)).at("properties");
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
    nlohmann::json const update = Schema("update");
    EXPECT_EQ(update.at("newParams").at("title"), "New Parameters For Output Id");
    EXPECT_EQ(update.at("newParams").at("sortOrder"), 200);
    EXPECT_EQ(update.at("autoShift").at("title"), "Auto Shift Blocks On Output id Overlap");
    EXPECT_EQ(update.at("outputId").at("minimum"), 0);
    EXPECT_EQ(Schema("add").at("blocks").at("title"), "Register Block Parameters List");
    EXPECT_EQ(Schema("add").at("autoShift").at("title"), "Auto Shift Blocks On Output id Overlap");
    EXPECT_EQ(Schema("remove").at("outputIdList").at("title"), "Output Id List");
    EXPECT_EQ(Schema("compact").at("startingOutputId").at("title"), "Starting Output Id");
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
    EXPECT_EQ(RefusalOf([&] {
                  Invoke("add", {{"blocks", {{{"type", "x"}}, {{"type", ""}}}}});
              }),
              (Refusal{0, "No register blocks were added."}));
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
