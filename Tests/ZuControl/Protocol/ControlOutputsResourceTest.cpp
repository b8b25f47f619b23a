#include "ZuControl/Protocol/ControlOutputsResource.h"

#include "Support/ResourceFixture.h"

namespace ZuControl::Protocol
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;

class ControlOutputsResourceTest : public ZuTest::ResourceFixture
{
protected:
    Json Read()
    {
        return resource.Document(Request({{"protocol", "a"}}), response);
    }

    ZuTest::FakeControlInstance& instance = manager.Put("a");
    ZuTest::NumbersGroup outputs;
    ZuTest::NumbersActionTarget target{calls, {"add", "remove"}};
    ControlOutputsResource resource{manager};
};

TEST_F(ControlOutputsResourceTest, ReadsTheMapUnderItsLockAndLinksTheCommands)
{
    instance.outputs = &outputs;
    instance.outputsTarget = &target;

    EXPECT_EQ(Read(), Json::parse(R"({"a": 1, "b": 20})"));

    EXPECT_EQ(calls.All(), (Calls{"OutputsMapBeginLock", "OutputsMapEndLock"}));
    EXPECT_EQ(ReferencesOf(response), (Calls{"link zu:command[] /controls/a/outputs/commands/add",
                                             "link zu:command[] /controls/a/outputs/commands/remove"}));
}

TEST_F(ControlOutputsResourceTest, ReadsAMapWithoutCommands)
{
    instance.outputs = &outputs;

    EXPECT_EQ(Read(), Json::parse(R"({"a": 1, "b": 20})"));
    EXPECT_EQ(ReferencesOf(response), Calls{});
}

TEST_F(ControlOutputsResourceTest, ReleasesTheLockWhenThereIsNoMap)
{
    EXPECT_EQ(CausesOf([this] { Read(); }),
              (std::vector<Refusal>{{-999, "Failed to convert a output map"}, {-999, ""}}));
    EXPECT_EQ(calls.All(), (Calls{"OutputsMapBeginLock", "OutputsMapEndLock"}));
}

TEST_F(ControlOutputsResourceTest, ReleasesTheLockBehindWhatIsNoException)
{
    instance.on["OutputsMap"] = [] { throw 42; };
    instance.outputs = &outputs;

    EXPECT_EQ(RefusalOf([this] { Read(); }), (Refusal{0, "Failed to convert a output map"}));

    EXPECT_EQ(calls.Count("OutputsMapEndLock"), 1u);
}

TEST_F(ControlOutputsResourceTest, ReleasesNoLockThatItDoesNotHold)
{
    instance.on["OutputsMapBeginLock"] = [] { throw std::runtime_error("held"); };

    EXPECT_EQ(CausesOf([this] { Read(); }), (std::vector<Refusal>{{0, "Failed to convert a output map"}, {0, "held"}}));
    EXPECT_EQ(calls.All(), (Calls{"OutputsMapBeginLock"}));
}

TEST_F(ControlOutputsResourceTest, RefusesEveryUpdate)
{
    EXPECT_EQ(RefusalOf([this] {
                  resource.UpdateDocument(Request({{"protocol", "a"}}), Json::object());
              }),
              (Refusal{-983, ""}));
    EXPECT_EQ(RefusalOf([this] { resource.UpdateDocument(Request({}), Json()); }), (Refusal{-983, ""}));
}

TEST_F(ControlOutputsResourceTest, RefusesARequestWithoutAProtocol)
{
    EXPECT_EQ(RefusalOf([this] { resource.Document(Request({}), response); }), (Refusal{-997, ""}));
    EXPECT_EQ(calls.All(), Calls{});
}

} // namespace ZuControl::Protocol
