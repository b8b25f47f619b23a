#include "ZuControl/Protocol/ControlRegisterAssemblyResource.h"

#include "Support/ResourceFixture.h"

#include <stdexcept>

namespace ZuControl::Protocol
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;

class ControlRegisterAssemblyActionResourceTest : public ZuTest::ResourceFixture
{
protected:
    ControlRegisterAssemblyActionResourceTest()
    {
        instance.assemblyTarget = &target;
    }

    Json Read(Keys keys)
    {
        return resource.Document(Request(std::move(keys)), response);
    }

    Json Invoke(std::string const& command, Json const& body = Json::object())
    {
        return resource.Invoke(Request({{"protocol", "a"}, {"registerAssembly", "r"}, {"command", command}}), body);
    }

    ZuTest::FakeControlInstance& instance = manager.Put("a");
    ZuTest::NumbersActionTarget target{calls, {"add", "remove"}};
    ControlRegisterAssemblyActionResource resource{manager};
};

TEST_F(ControlRegisterAssemblyActionResourceTest, CanBeCalledAndNotUpdated)
{
    EXPECT_EQ(resource.CallableProvider(), &resource);
    EXPECT_EQ(RefusalOf([this] { resource.UpdateDocument(Request({}), {}); }), (Refusal{-983, ""}));
}

TEST_F(ControlRegisterAssemblyActionResourceTest, ListsTheCommands)
{
    EXPECT_EQ(Read({{"protocol", "a"}, {"registerAssembly", "r"}}), Json());
    EXPECT_EQ(ReferencesOf(response), (Calls{"embed item[] /controls/a/registerAssemblies/r/commands/add",
                                             "embed item[] /controls/a/registerAssemblies/r/commands/remove"}));
}

TEST_F(ControlRegisterAssemblyActionResourceTest, ShowsTheArgumentsOfACommand)
{
    EXPECT_EQ(Read({{"protocol", "a"}, {"registerAssembly", "r"}, {"command", "add"}}),
              Json::parse(R"({"id": "add", "parameters": {"a": 1, "b": 20}})"));
}

TEST_F(ControlRegisterAssemblyActionResourceTest, RunsACommandInItsBracketAndAnswersWithItsResult)
{
    EXPECT_EQ(Invoke("add", {{"a", 5}, {"b", 2}}), Json::object());

    EXPECT_EQ(calls.All(), (Calls{"BeginUpdateRegisterAssembly", "add(5,2)", "RegisterAssemblyUpdate(r)",
                                  "EndUpdateRegisterAssembly(r)"}));
}

TEST_F(ControlRegisterAssemblyActionResourceTest, AnswersNullForNoResult)
{
    target.result = nullptr;

    EXPECT_EQ(Invoke("add"), Json());
}

TEST_F(ControlRegisterAssemblyActionResourceTest, ClosesTheBracketOfAFailedCommandWithoutAnUpdate)
{
    target.onInvoke = Failing(-977, "");

    EXPECT_EQ(CausesOf([this] { Invoke("add"); }), (std::vector<Refusal>{{-977, ""}, {-977, ""}}));
    EXPECT_EQ(calls.All(), (Calls{"BeginUpdateRegisterAssembly", "add(1,20)", "EndUpdateRegisterAssembly(r)"}));
}

TEST_F(ControlRegisterAssemblyActionResourceTest, ClosesTheBracketWhenTheUpdateFails)
{
    instance.on["RegisterAssemblyUpdate(r)"] = [] { throw std::runtime_error("no"); };

    EXPECT_EQ(CausesOf([this] { Invoke("add"); }), (std::vector<Refusal>{{0, "no"}, {0, "no"}}));
    EXPECT_EQ(calls.All(), (Calls{"BeginUpdateRegisterAssembly", "add(1,20)", "RegisterAssemblyUpdate(r)",
                                  "EndUpdateRegisterAssembly(r)"}));
}

TEST_F(ControlRegisterAssemblyActionResourceTest, ReadsArgumentsAheadOfTheBracket)
{
    EXPECT_EQ(RefusalOf([this] { Invoke("jump"); }),
              (Refusal{-999, "The action 'jump' does not exist. No parameters available"}));
    EXPECT_EQ(CausesOf([this] {
                  Invoke("add", {{"a", "five"}});
              })[0],
              (Refusal{0, "[json.exception.type_error.302] type must be number, but is string"}));
    EXPECT_EQ(calls.All(), Calls{});
}

TEST_F(ControlRegisterAssemblyActionResourceTest, RefusesWhereThereAreNoCommands)
{
    instance.assemblyTarget = nullptr;

    EXPECT_EQ(RefusalOf([this] { Invoke("add"); }), (Refusal{-996, ""}));
    EXPECT_EQ(RefusalOf([this] { Read({{"protocol", "a"}, {"registerAssembly", "r"}}); }), (Refusal{-996, ""}));
    EXPECT_EQ(calls.All(), Calls{});
}

TEST_F(ControlRegisterAssemblyActionResourceTest, MissesServiceThenAssemblyThenCommand)
{
    Refusal const noService{-997, "Request is missing service name"};
    Refusal const noAssembly{-997, "Request is missing assembly id"};
    Keys keys;
    EXPECT_EQ(RefusalOf([&] { Read(keys); }), noService);
    EXPECT_EQ(RefusalOf([&] { resource.Invoke(Request(keys), {}); }), noService);

    keys.emplace_back("protocol", "a");
    EXPECT_EQ(RefusalOf([&] { Read(keys); }), noAssembly);
    EXPECT_EQ(RefusalOf([&] { resource.Invoke(Request(keys), {}); }), noAssembly);

    keys.emplace_back("registerAssembly", "r");
    EXPECT_EQ(RefusalOf([&] { resource.Invoke(Request(keys), {}); }), (Refusal{-997, "Request is missing command"}));
}

} // namespace ZuControl::Protocol
