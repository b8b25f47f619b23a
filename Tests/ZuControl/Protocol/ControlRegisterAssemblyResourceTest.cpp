#include "ZuControl/Protocol/ControlRegisterAssemblyResource.h"

#include "Support/FakeProtocol.h"
#include "Support/ResourceFixture.h"

namespace ZuControl::Protocol
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;

class ControlRegisterAssemblyResourceTest : public ZuTest::ResourceFixture
{
protected:
    ControlRegisterAssemblyResourceTest()
    {
        instance.assemblies = {{"r1", &assembly}, {"r2", &assembly}};
        manager.Put("x");
        resource = std::make_unique<ControlRegisterAssemblyResource>(manager);
        Listen(*resource);
    }

    Json Read(Keys keys)
    {
        return resource->Document(Request(std::move(keys)), response);
    }

    ZuTest::FakeControlInstance& instance = manager.Put("a");
    ZuTest::FakeRegisterAssembly assembly{calls};
    ZuTest::NumbersActionTarget target{calls, {"add"}};
    std::unique_ptr<ControlRegisterAssemblyResource> resource;
};

TEST_F(ControlRegisterAssemblyResourceTest, ListsTheAssemblies)
{
    EXPECT_EQ(Read({{"protocol", "a"}}), Json::object());
    EXPECT_EQ(ReferencesOf(response), (Calls{"embed item[] /controls/a/registerAssemblies/r1",
                                             "embed item[] /controls/a/registerAssemblies/r2"}));
}

TEST_F(ControlRegisterAssemblyResourceTest, ShowsAnEmptyAssemblyWithEmptyArrays)
{
    EXPECT_EQ(Read({{"protocol", "a"}, {"registerAssembly", "r1"}}),
              Json::parse(R"({"attributes": {}, "supportedBlockTypes": [], "blocks": []})"));

    EXPECT_EQ(calls.All(), (Calls{"RegisterAssembly.BeginLock", "RegisterAssembly.EndLock",
                                  "RegisterAssembly.BeginLock", "RegisterAssembly.EndLock"}));
    EXPECT_EQ(ReferencesOf(response), Calls{});
}

TEST_F(ControlRegisterAssemblyResourceTest, LinksTheCommands)
{
    instance.assemblyTarget = &target;

    Read({{"protocol", "a"}, {"registerAssembly", "r1"}});

    EXPECT_EQ(ReferencesOf(response), (Calls{"link zu:command[] /controls/a/registerAssemblies/r1/commands/add"}));
}

TEST_F(ControlRegisterAssemblyResourceTest, RefusesWhereThereIsNoAssembly)
{
    EXPECT_EQ(RefusalOf([this] { Read({{"protocol", "a"}, {"registerAssembly", "r3"}}); }), (Refusal{-999, ""}));
    EXPECT_EQ(RefusalOf([this] { Read({{"protocol", "x"}}); }), (Refusal{-996, ""}));
    EXPECT_EQ(RefusalOf([this] { Read({{"protocol", "x"}, {"registerAssembly", "r1"}}); }), (Refusal{-996, ""}));
    EXPECT_EQ(RefusalOf([this] { Read({}); }), (Refusal{-997, ""}));
    EXPECT_EQ(RefusalOf([this] { resource->UpdateDocument(Request({}), {}); }), (Refusal{-983, ""}));
    EXPECT_EQ(calls.All(), Calls{});
}

TEST_F(ControlRegisterAssemblyResourceTest, TellsOfEachChangeOfAnAssembly)
{
    instance.assemblyEvent.Fire("a", "r1");
    manager.loadEvent.Fire(State::Begin);
    instance.assemblyEvent.Fire("a", "r2");
    manager.loadEvent.Fire(State::End);
    instance.assemblyEvent.Fire("a", "r/3");

    EXPECT_EQ(calls.All(),
              (Calls{"notify 2 /controls/a/registerAssemblies/r1", "notify 2 /controls/a/registerAssemblies/r%2F3"}));
    EXPECT_EQ(resource->SuppressedCount(), 1u);
}

TEST_F(ControlRegisterAssemblyResourceTest, LeavesTheEventsOfAllInstancesWhenItGoes)
{
    resource.reset();

    EXPECT_TRUE(instance.assemblyEvent.Empty());
    EXPECT_EQ(calls.All(), (Calls{"RemoveAssemblyHandler", "RemoveAssemblyHandler"}));
}

TEST_F(ControlRegisterAssemblyResourceTest, LogsThatItCouldNotLeaveAnEvent)
{
    instance.on["RemoveAssemblyHandler"] = Failing(-5, "no");

    resource.reset();
    instance.assemblyEvent.Fire("a", "r1"); // the handler left behind does nothing

    EXPECT_EQ(calls.All(), (Calls{"RemoveAssemblyHandler"}));
    EXPECT_EQ(log.LinesWithoutTraces(),
              (std::vector{ZuTest::Error(
                  "ZuControl::Protocol::ControlRegisterAssemblyResource::RemoveRegisterAssemblyUpdateEvent",
                  "Exception thrown while removing register assembly update event handlers")}));
}

} // namespace ZuControl::Protocol
