#include "ZuControl/Protocol/ControlOutputsResource.h"

#include "Support/ResourceFixture.h"

#include <stdexcept>

namespace ZuControl::Protocol
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;

class ControlOutputsActionResourceTest : public ZuTest::ResourceFixture
{
protected:
    ControlOutputsActionResourceTest()
    {
        instance.outputsTarget = &target;
        manager.Put("x");
        resource = std::make_unique<ControlOutputsActionResource>(manager);
        Listen(*resource);
    }

    Json Invoke(std::string const& command, Json const& body = Json::object())
    {
        return resource->Invoke(Request({{"protocol", "a"}, {"command", command}}), body);
    }

    std::vector<ZuTest::LogLine> const noLines;
    std::vector<ZuTest::LogLine> const notAllAdded{
        ZuTest::UserWarning("One or more data sources could not be added to output map."),
        ZuTest::Warning("ZuControl::Protocol::ControlOutputsActionResource::Invoke",
                        "One or more data sources could not be added to output map.")};
    ZuTest::FakeControlInstance& instance = manager.Put("a");
    ZuTest::NumbersActionTarget target{calls, {"add", "addAll"}};
    std::unique_ptr<ControlOutputsActionResource> resource;
};

TEST_F(ControlOutputsActionResourceTest, CanBeCalledAndNotUpdated)
{
    EXPECT_EQ(resource->CallableProvider(), resource.get());
    EXPECT_EQ(RefusalOf([this] { resource->UpdateDocument(Request({}), {}); }), (Refusal{-983, ""}));
}

TEST_F(ControlOutputsActionResourceTest, ListsTheCommands)
{
    EXPECT_EQ(resource->Document(Request({{"protocol", "a"}}), response), Json());
    EXPECT_EQ(ReferencesOf(response), (Calls{"embed item[] /controls/a/outputs/commands/add",
                                             "embed item[] /controls/a/outputs/commands/addAll"}));
}

TEST_F(ControlOutputsActionResourceTest, ShowsTheArgumentsOfACommand)
{
    EXPECT_EQ(resource->Document(Request({{"protocol", "a"}, {"command", "add"}}), response),
              Json::parse(R"({"id": "add", "parameters": {"a": 1, "b": 20}})"));
}

TEST_F(ControlOutputsActionResourceTest, RunsACommandInItsBracketAndAnswersNull)
{
    EXPECT_EQ(Invoke("add", {{"a", 5}, {"b", 2}}), Json()); // b is out of bounds: the map checks it, not the record

    EXPECT_EQ(calls.All(), (Calls{"BeginUpdateOutputsMap", "add(5,2)", "OutputsUpdate", "EndUpdateOutputsMap",
                                  "notify 2 /controls/a/outputs"}));
    EXPECT_EQ(log.Lines(), noLines);
}

TEST_F(ControlOutputsActionResourceTest, CutsANumberToFitAndRefusesNone)
{
    Invoke("add", {{"a", -1}, {"b", 4294967301}}); // -1 means "no id"

    EXPECT_EQ(calls.All().at(1), "add(4294967295,5)");
}

TEST_F(ControlOutputsActionResourceTest, ReportsAFailedCommandAndClosesTheBracket)
{
    target.onInvoke = Failing(-987, "there");

    EXPECT_EQ(CausesOf([this] { Invoke("add"); }),
              (std::vector<Refusal>{{-987, "Output connection map action error"}, {-987, "there"}}));
    EXPECT_EQ(calls.All(), (Calls{"BeginUpdateOutputsMap", "add(1,20)", "OutputsUpdate", "EndUpdateOutputsMap",
                                  "notify 2 /controls/a/outputs"}));
}

TEST_F(ControlOutputsActionResourceTest, KeepsTheFirstFailureWhenTheBracketFailsToo)
{
    target.onInvoke = [] { throw std::runtime_error("first"); };
    instance.on["OutputsUpdate"] = Failing(-5, "second");
    instance.on["EndUpdateOutputsMap"] = Failing(-6, "third");

    EXPECT_EQ(CausesOf([this] { Invoke("add"); }),
              (std::vector<Refusal>{{0, "Output connection map action error"}, {0, "first"}}));
    EXPECT_EQ(calls.All(), (Calls{"BeginUpdateOutputsMap", "add(1,20)", "OutputsUpdate", "EndUpdateOutputsMap"}));
}

TEST_F(ControlOutputsActionResourceTest, WarnsOfAnAddAllThatFailedAndAnswersNull)
{
    target.onInvoke = Failing(-987, "there");

    EXPECT_EQ(Invoke("addAll"), Json());

    EXPECT_EQ(calls.All(), (Calls{"BeginUpdateOutputsMap", "addAll(1,20)", "OutputsUpdate", "EndUpdateOutputsMap",
                                  "notify 2 /controls/a/outputs"}));
    EXPECT_EQ(log.Lines(), notAllAdded);
}

TEST_F(ControlOutputsActionResourceTest, FailsWhenTheUpdateCannotBeTold)
{
    instance.on["OutputsUpdate"] = Failing(-5, "no");
    instance.on["EndUpdateOutputsMap"] = Failing(-6, "not told");

    EXPECT_EQ(
        CausesOf([this] { Invoke("add"); }),
        (std::vector<Refusal>{{-5, "Failed to notify control service of an update to the output map."}, {-5, "no"}}));
    EXPECT_EQ(calls.All(), (Calls{"BeginUpdateOutputsMap", "add(1,20)", "OutputsUpdate", "EndUpdateOutputsMap"}));
}

TEST_F(ControlOutputsActionResourceTest, FailsWhenTheBracketCannotBeClosed)
{
    target.onInvoke = Failing(-987, "there"); // lost, with its warning: the failure of the end replaces it
    instance.on["EndUpdateOutputsMap"] = Failing(-6, "no");

    EXPECT_EQ(CausesOf([this] { Invoke("addAll"); }),
              (std::vector<Refusal>{{-6, "Failed to send output map update notification"}, {-6, "no"}}));
    EXPECT_EQ(log.Lines(), noLines);
}

TEST_F(ControlOutputsActionResourceTest, ReadsArgumentsAheadOfTheBracket)
{
    EXPECT_EQ(RefusalOf([this] { Invoke("jump"); }),
              (Refusal{-999, "The action 'jump' does not exist. No parameters available"}));
    EXPECT_EQ(RefusalOf([this] { Invoke("nothing"); }), (Refusal{-996, ""}));
    EXPECT_EQ(CausesOf([this] {
                  Invoke("add", {{"a", "five"}});
              })[0],
              (Refusal{0, "[json.exception.type_error.302] type must be number, but is string"}));
    EXPECT_EQ(calls.All(), Calls{});
}

TEST_F(ControlOutputsActionResourceTest, RefusesWhereThereAreNoCommands)
{
    Refusal const expected{-996, ""};
    instance.outputsTarget = nullptr;

    EXPECT_EQ(RefusalOf([this] { Invoke("add"); }), expected);
    EXPECT_EQ(RefusalOf([this] { resource->Document(Request({{"protocol", "a"}}), response); }), expected);
    EXPECT_EQ(RefusalOf([this] {
                  resource->Document(Request({{"protocol", "a"}, {"command", "add"}}), response);
              }),
              expected);
    EXPECT_EQ(calls.All(), Calls{});
}

TEST_F(ControlOutputsActionResourceTest, RefusesMissingKeys)
{
    EXPECT_EQ(RefusalOf([this] { resource->Document(Request({}), response); }), (Refusal{-997, ""}));
    EXPECT_EQ(RefusalOf([this] { resource->Invoke(Request({}), {}); }),
              (Refusal{-997, "Request is missing service name"}));
    EXPECT_EQ(RefusalOf([this] {
                  resource->Invoke(Request({{"protocol", "a"}}), {});
              }),
              (Refusal{-997, "Request is missing command"}));
}

TEST_F(ControlOutputsActionResourceTest, LeavesTheEventsOfAllInstancesWhenItGoes)
{
    resource.reset();

    EXPECT_TRUE(instance.outputsEvent.Empty());
    EXPECT_EQ(calls.All(), (Calls{"RemoveOutputsHandler", "RemoveOutputsHandler"}));
    EXPECT_EQ(log.Lines(), noLines);
}

TEST_F(ControlOutputsActionResourceTest, LogsThatItCouldNotLeaveAnEvent)
{
    instance.on["RemoveOutputsHandler"] = Failing(-5, "no");

    resource.reset();
    instance.outputsEvent.Fire("a", true); // the handler left behind does nothing

    EXPECT_EQ(calls.All(), (Calls{"RemoveOutputsHandler"}));
    EXPECT_EQ(
        log.LinesWithoutTraces(),
        (std::vector{ZuTest::Error("ZuControl::Protocol::ControlOutputsActionResource::RemoveOutputsUpdateEventHandler",
                                   "Exception thrown while removing outputs map update event handlers")}));
}

} // namespace ZuControl::Protocol
