#include "ZuControl/Protocol/ControlActionResource.h"

#include "Support/ResourceFixture.h"

namespace ZuControl::Protocol
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;

class ControlActionResourceTest : public ZuTest::ResourceFixture
{
protected:
    ControlActionResourceTest()
    {
        instance.target = &target;
        Listen(resource);
    }

    Json Invoke(Json const& body, std::string const& command = "go")
    {
        return resource.Invoke(Request({{"protocol", "a"}, {"command", command}}), body);
    }

    ZuTest::FakeControlInstance& instance = manager.Put("a");
    ZuTest::NumbersActionTarget target{calls, {"go", "stop"}};
    ControlActionResource resource{manager};
};

TEST_F(ControlActionResourceTest, CanBeCalledAndNotUpdated)
{
    EXPECT_EQ(resource.CallableProvider(), &resource);
    EXPECT_EQ(RefusalOf([this] { resource.UpdateDocument(Request({{"protocol", "a"}}), {}); }), (Refusal{-983, ""}));
}

TEST_F(ControlActionResourceTest, ListsTheActionsBesideANullDocument)
{
    EXPECT_EQ(resource.Document(Request({{"protocol", "a"}}), response), Json());
    EXPECT_EQ(ReferencesOf(response),
              (Calls{"embed item[] /controls/a/commands/go", "embed item[] /controls/a/commands/stop"}));
}

TEST_F(ControlActionResourceTest, ListsNothingWithoutATarget)
{
    instance.target = nullptr;

    EXPECT_EQ(resource.Document(Request({{"protocol", "a"}}), response), Json());
    EXPECT_EQ(ReferencesOf(response), Calls{});
}

TEST_F(ControlActionResourceTest, ShowsTheArgumentsOfAnAction)
{
    EXPECT_EQ(resource.Document(Request({{"protocol", "a"}, {"command", "go"}}), response),
              Json::parse(R"({"id": "go", "parameters": {"a": 1, "b": 20}})"));
}

TEST_F(ControlActionResourceTest, TakesArgumentsFlatAndUnderParametersWhichWin)
{
    EXPECT_EQ(Invoke(Json::parse(R"({"a": 1, "b": 2, "parameters": {"a": 3}})")), Json::object());

    EXPECT_EQ(calls.All(), (Calls{"go(3,2)"})); // b is below its minimum: no validation, no notification
}

TEST_F(ControlActionResourceTest, AnswersWithTheResult)
{
    target.result = std::make_shared<ZuTest::NumbersGroup>();
    EXPECT_EQ(Invoke(Json::object()), Json::parse(R"({"a": 1, "b": 20})"));

    target.result = nullptr;
    EXPECT_EQ(Invoke(Json::object()), Json());
}

TEST_F(ControlActionResourceTest, LetsAFailureThroughAsItIs)
{
    target.onInvoke = Failing(-5, "no");

    EXPECT_EQ(CausesOf([this] { Invoke(Json::object()); }), (std::vector<Refusal>{{-5, "no"}}));
    EXPECT_EQ(RefusalOf([this] { Invoke(Json::object(), "jump"); }),
              (Refusal{-999, "The action 'jump' does not exist. No parameters available"}));
    EXPECT_EQ(RefusalOf([this] { Invoke(Json::object(), "nothing"); }), (Refusal{-996, ""}));
}

TEST_F(ControlActionResourceTest, MissesTheTargetAheadOfTheCommand)
{
    auto const noCommand = Request({{"protocol", "a"}});
    auto const noProtocol = Request({{"command", "go"}});
    EXPECT_EQ(RefusalOf([&] { resource.Invoke(noCommand, {}); }), (Refusal{-997, ""}));
    EXPECT_EQ(RefusalOf([&] { resource.Invoke(noProtocol, {}); }), (Refusal{-997, ""}));
    EXPECT_EQ(RefusalOf([&] { resource.Document(noProtocol, response); }), (Refusal{-997, ""}));

    instance.target = nullptr;

    EXPECT_EQ(RefusalOf([&] { resource.Invoke(noCommand, {}); }), (Refusal{-996, ""}));
    EXPECT_EQ(RefusalOf([&] { Invoke(Json::object()); }), (Refusal{-996, ""}));
    EXPECT_EQ(RefusalOf([&] {
                  resource.Document(Request({{"protocol", "a"}, {"command", "go"}}), response);
              }),
              (Refusal{-996, ""}));
}

} // namespace ZuControl::Protocol
