#include "ZuControl/Protocol/ControlResourceBase.h"

#include "Support/ResourceFixture.h"
#include "ZuApi/JsonSerializer.h"

namespace ZuControl::Protocol
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;

namespace
{

class OpenResource final : public ControlResourceBase
{
public:
    using ControlResourceBase::AppendSchema;
    using ControlResourceBase::ControlResourceBase;
    using ControlResourceBase::MakeRegisterAssemblyList;
    using ControlResourceBase::RequireKey;
    using ControlResourceBase::ResolveToInstance;
    using ControlResourceBase::ResourceEventHandler;

    nlohmann::json Document(ZuRest::RequestInfo const& /*request*/, ZuRest::ResponseInfo& /*response*/) override
    {
        return {};
    }
};

} // namespace

using ControlResourceBaseTest = ZuTest::ResourceFixture;

TEST_F(ControlResourceBaseTest, TellsOfAChangeAsEventTwo)
{
    OpenResource resource(manager);
    Listen(resource);

    resource.ResourceEventHandler("/controls/a");

    EXPECT_EQ(calls.All(), (Calls{"notify 2 /controls/a"}));
    EXPECT_EQ(resource.SuppressedCount(), 0u);
}

TEST_F(ControlResourceBaseTest, HoldsNotificationsBackWhileAJobIsLoadedAndNeverSendsThem)
{
    OpenResource resource(manager);
    Listen(resource);

    manager.loadEvent.Fire(State::Begin);
    resource.ResourceEventHandler("/1");
    resource.ResourceEventHandler("/2");
    EXPECT_EQ(resource.SuppressedCount(), 2u);
    manager.loadEvent.Fire(State::End);
    EXPECT_EQ(resource.SuppressedCount(), 2u);
    resource.ResourceEventHandler("/marker");

    EXPECT_EQ(calls.All(), (Calls{"notify 2 /marker"}));
}

TEST_F(ControlResourceBaseTest, CountsFromNoughtWithTheNextLoad)
{
    OpenResource resource(manager);
    manager.loadEvent.Fire(State::Begin);
    resource.ResourceEventHandler("/1");
    manager.loadEvent.Fire(State::End);

    manager.loadEvent.Fire(State::Begin);

    EXPECT_EQ(resource.SuppressedCount(), 0u);
    resource.ResourceEventHandler("/2");
    EXPECT_EQ(resource.SuppressedCount(), 1u);
}

TEST_F(ControlResourceBaseTest, LeavesTheLoadEventWhenItGoes)
{
    {
        OpenResource const resource(manager);
        EXPECT_EQ(manager.loadEvent.Count(), 1u);
    }

    EXPECT_TRUE(manager.loadEvent.Empty());
}

TEST_F(ControlResourceBaseTest, ResolvesANameByTheManager)
{
    IControlInstance& put = manager.Put("a");
    OpenResource resource(manager);

    EXPECT_EQ(&resource.ResolveToInstance("a"), &put);
    EXPECT_EQ(RefusalOf([&] { resource.ResolveToInstance("b"); }),
              (Refusal{-999, "Control protocol type not recognized: 'b'."}));
}

TEST_F(ControlResourceBaseTest, RefusesAMissingKeyWithOrWithoutAText)
{
    auto const request = Request({{"there", "value"}});

    EXPECT_EQ(OpenResource::RequireKey(request, "there"), "value");
    EXPECT_EQ(RefusalOf([&] { OpenResource::RequireKey(request, "not"); }), (Refusal{-997, ""}));
    EXPECT_EQ(RefusalOf([&] { OpenResource::RequireKey(request, "not", "100% missing"); }),
              (Refusal{-997, "100% missing"}));
}

TEST_F(ControlResourceBaseTest, PutsTheSchemaInPlaceOfWhatIsThere)
{
    ZuTest::NumbersGroup numbers;
    Json document{{"_schema", "old"}, {"kept", 1}};

    OpenResource::AppendSchema({}, numbers, document);

    EXPECT_EQ(document.at("_schema"), Zu::Properties::JsonSerializer::SerializeSchema(numbers));
    EXPECT_EQ(document.at("kept"), 1);
}

TEST_F(ControlResourceBaseTest, ListsAssembliesInOrder)
{
    OpenResource::MakeRegisterAssemblyList("/controls/:protocol/registerAssemblies/:registerAssembly", "key", "a b",
                                           {"2", "1"}, response);

    EXPECT_EQ(ReferencesOf(response), (Calls{"embed key[] /controls/a%20b/registerAssemblies/2",
                                             "embed key[] /controls/a%20b/registerAssemblies/1"}));
}

TEST_F(ControlResourceBaseTest, CannotBeUpdatedUnlessAResourceSaysSo)
{
    OpenResource resource(manager);

    EXPECT_EQ(RefusalOf([&] { resource.UpdateDocument(Request({}), {}); }), (Refusal{-983, ""}));
}

} // namespace ZuControl::Protocol
