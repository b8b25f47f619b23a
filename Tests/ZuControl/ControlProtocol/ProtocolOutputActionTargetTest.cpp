#include "ZuControl/ControlProtocol/ProtocolOutputActionTarget.h"

#include "Support/RecordingSink.h"
#include "Support/Refusal.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuControl/ControlProtocol/StandardProtocolOutputMap.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <typeinfo>

namespace ZuControl::ControlProtocol
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;

class ProtocolOutputActionTargetTest : public testing::Test
{
protected:
    using Json = nlohmann::json;
    using Serializer = Zu::Properties::JsonSerializer;
    using Ids = std::vector<std::pair<int, std::string>>;

    /// Runs an action with arguments from JSON and returns its result.
    Json Invoke(std::string const& action, Json const& arguments)
    {
        args = target.GetActionParams(action);
        Serializer::Deserialize(*args, arguments);
        std::shared_ptr<Zu::Params::Group> const result = target.InvokeAction(action, *args);
        return result == nullptr ? Json("null") : Serializer::Serialize(*result);
    }

    Ids Items()
    {
        Ids ids;
        for (uint64 i = 0; i < map.Count(); ++i)
        {
            ids.emplace_back(map.At(i).outputId.Get(), map.At(i).source.Get());
        }
        return ids;
    }

    ZuTest::LogRecorder log;
    StandardProtocolOutputMap map{10, 0, 65534};
    ProtocolOutputActionTarget target{map};
    std::shared_ptr<Zu::Params::Group> args;
    Json const empty = Json::object();
};

TEST_F(ProtocolOutputActionTargetTest, ListsSixActionsInOrder)
{
    std::vector<std::pair<std::string, std::string>> listed;
    for (ControlActionInfo const& action : target.ListActions())
    {
        listed.emplace_back(action.Id(), action.DisplayName());
    }

    EXPECT_EQ(listed, (std::vector<std::pair<std::string, std::string>>{{"add", "Add"},
                                                                        {"addAll", "AddAll"},
                                                                        {"remove", "Remove"},
                                                                        {"removeAll", "RemoveAll"},
                                                                        {"compactId", "Compact"},
                                                                        {"updateId", "Update"}}));
}

TEST_F(ProtocolOutputActionTargetTest, GivesNewArgumentsForEachAction)
{
    for (char const* const action : {"add", "remove"})
    {
        EXPECT_NE(dynamic_cast<StandardOutputItemArgs*>(target.GetActionParams(action).get()), nullptr) << action;
    }
    for (char const* const action : {"addAll", "updateId"})
    {
        EXPECT_NE(dynamic_cast<StandardOutputsArgs*>(target.GetActionParams(action).get()), nullptr) << action;
    }
    for (char const* const action : {"removeAll", "compactId"})
    {
        EXPECT_EQ(Serializer::Serialize(*target.GetActionParams(action)), empty) << action;
        EXPECT_NE(target.GetActionParams(action), target.GetActionParams(action)) << action;
    }
}

TEST_F(ProtocolOutputActionTargetTest, RunsEachActionAndGivesAnEmptyResult)
{
    EXPECT_EQ(Invoke("add", {{"outputId", 5}, {"source", "a"}}), empty);
    EXPECT_EQ(Items(), (Ids{{5, "a"}}));
    EXPECT_EQ(Invoke("addAll", {{"map", {{{"source", "b"}}, {{"source", "c"}}}}}), empty);
    EXPECT_EQ(Items(), (Ids{{5, "a"}, {6, "b"}, {7, "c"}}));
    EXPECT_EQ(Invoke("remove", {{"outputId", 6}}), empty);
    EXPECT_EQ(Items(), (Ids{{5, "a"}, {7, "c"}}));
    EXPECT_EQ(Invoke("compactId", empty), empty);
    EXPECT_EQ(Items(), (Ids{{0, "a"}, {1, "c"}}));
    EXPECT_EQ(Invoke("updateId", {{"map", {{{"outputId", 0}}, {{"outputId", 9}}}}}), empty);
    EXPECT_EQ(Items(), (Ids{{1, "c"}, {9, "a"}}));
    EXPECT_EQ(Invoke("removeAll", empty), empty);
    EXPECT_EQ(Items(), Ids{});
    EXPECT_TRUE(log.Lines().empty());
}

TEST_F(ProtocolOutputActionTargetTest, GivesANewResultEachTime)
{
    Zu::Params::Group none;

    EXPECT_NE(target.InvokeAction("compactId", none), target.InvokeAction("compactId", none));
}

TEST_F(ProtocolOutputActionTargetTest, FillsTheCallersRecord)
{
    Invoke("addAll", {{"map", {{{"source", "a"}}, {{"source", "b"}}}}});
    EXPECT_EQ(Serializer::Serialize(*args).at("map"),
              (Json{{{"outputId", 0}, {"source", "a"}}, {{"outputId", 1}, {"source", "b"}}}));

    Invoke("updateId", {{"map", {{{"outputId", 0}}, {{"outputId", 9}}}}});
    EXPECT_EQ(Serializer::Serialize(*args).at("map").at(1), (Json{{"outputId", 9}, {"source", "a"}}));
}

TEST_F(ProtocolOutputActionTargetTest, PassesOnWhatTheMapRefuses)
{
    EXPECT_EQ(RefusalOf([&] { Invoke("remove", {{"outputId", 3}}); }), (Refusal{-999, ""}));
    EXPECT_EQ(RefusalOf([&] {
                  Invoke("updateId", {{"map", {{{"outputId", 3}}, {{"outputId", 65535}}}}});
              }),
              (Refusal{-997, "Output id is invalid."}));
    Zu::Params::Group other;
    EXPECT_THROW(target.InvokeAction("add", other), std::bad_cast);
    EXPECT_THROW(target.InvokeAction("updateId", other), std::bad_cast);
}

TEST_F(ProtocolOutputActionTargetTest, KnowsNoOtherActions)
{
    Zu::Params::Group none;

    for (std::string const action : {"Add", "addall", "update", "compact", "", "100%s"})
    {
        EXPECT_EQ(RefusalOf([&] { target.GetActionParams(action); }),
                  (Refusal{-999, "The action '" + action + "' does not exist. No parameters available"}));
        EXPECT_EQ(RefusalOf([&] { target.InvokeAction(action, none); }),
                  (Refusal{-999, "The action '" + action + "' does not exist. Action ignored."}));
    }
    EXPECT_TRUE(log.Lines().empty());
}

} // namespace ZuControl::ControlProtocol
