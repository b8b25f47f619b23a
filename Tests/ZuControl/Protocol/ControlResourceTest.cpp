#include "ZuControl/Protocol/ControlResource.h"

#include "Support/AllocationCounter.h"
#include "Support/FakeProtocol.h"
#include "Support/ResourceFixture.h"
#include "Support/SealedRecord.h"

#include <cstdlib>
#include <latch>
#include <thread>

namespace ZuControl::Protocol
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;

class ControlResourceTest : public ZuTest::ResourceFixture
{
protected:
    ControlResourceTest()
    {
        instance.params = params;
        manager.Put("x");
        resource = std::make_unique<ControlResource>(manager);
        Listen(*resource);
    }

    Json ReadOne(bool wantsSchema = false)
    {
        return resource->Document(Request({{"protocol", "a"}}, wantsSchema), response);
    }

    void Update(Json const& body)
    {
        resource->UpdateDocument(Request({{"protocol", "a"}}), body);
    }

    void ExpectUnchanged()
    {
        EXPECT_FALSE(instance.enabled);
        EXPECT_EQ(params->a.Get(), 1u);
        EXPECT_EQ(params->b.Get(), 20u);
    }

    Calls const emptyBracket{"BeginUpdateParameters", "EndUpdateParameters", "notify 2 /controls/a"};
    ZuTest::FakeControlInstance& instance = manager.Put("a");
    std::shared_ptr<ZuTest::NumbersGroup> params = std::make_shared<ZuTest::NumbersGroup>();
    std::unique_ptr<ControlResource> resource;
};

TEST_F(ControlResourceTest, ListsTheProtocolsInOrder)
{
    Json const document = resource->Document(Request({}), response);

    EXPECT_EQ(document, Json::object());
    EXPECT_EQ(ReferencesOf(response), (Calls{"embed item[] /controls/a", "embed item[] /controls/x"}));
}

TEST_F(ControlResourceTest, ShowsAProtocolWithItsParameters)
{
    instance.enabled = true;
    instance.status = ProtocolStatus::FailedToStop;

    EXPECT_EQ(ReadOne(), Json::parse(R"({"enabled": true, "status": 5, "id": "a", "displayName": "a shown",
                                         "parameters": {"a": 1, "b": 20}})"));
    EXPECT_EQ(ReferencesOf(response), Calls{});
    EXPECT_EQ(calls.All(), Calls{});
}

TEST_F(ControlResourceTest, DescribesStatusAndParameters)
{
    Json const schema = ReadOne(true).at("_schema").at("properties");

    Json const& status = schema.at("status");
    EXPECT_EQ(status.at("title"), "Status");
    EXPECT_EQ(status.at("readOnly"), true);
    EXPECT_EQ(status.at("enum"), (Json{0, 1, 2, 3, 4, 5}));
    EXPECT_EQ(status.at("enumText"),
              (Json{"Running", "Stopped", "Starting", "Stopping", "Failed To Start", "Failed To Stop"}));
    EXPECT_EQ(schema.at("enabled").at("title"), "Enabled");
    EXPECT_EQ(schema.at("id").at("title"), "Id");
    EXPECT_EQ(schema.at("displayName").at("title"), "Name");
    EXPECT_EQ(schema.at("displayName").at("sortOrder"), 300);
    EXPECT_EQ(schema.at("parameters").at("title"), "parameters");
    EXPECT_EQ(schema.at("parameters").at("sortOrder"), 400);
}

TEST_F(ControlResourceTest, NamesOutputsAssembliesAndCommandsInThisOrder)
{
    ZuTest::NumbersGroup outputs;
    ZuTest::NumbersActionTarget target(calls, {"go", "a/b"});
    ZuTest::FakeRegisterAssembly assembly(calls);
    instance.outputs = &outputs;
    instance.assemblies = {{"r1", &assembly}, {"r2", &assembly}};
    instance.target = &target;

    ReadOne();

    EXPECT_EQ(ReferencesOf(response),
              (Calls{"embed zu:datasources /controls/a/outputs",
                     "embed zu:registerAssembly[] /controls/a/registerAssemblies/r1",
                     "embed zu:registerAssembly[] /controls/a/registerAssemblies/r2",
                     "link zu:command[] /controls/a/commands/go", "link zu:command[] /controls/a/commands/a%2Fb"}));
}

TEST_F(ControlResourceTest, RefusesAStatusThatIsNotListedBehindTheReferences)
{
    ZuTest::NumbersGroup outputs;
    instance.outputs = &outputs;
    instance.status = static_cast<ProtocolStatus>(6);
    Refusal const expected{-1000, "Undefined protocol status:6"};

    EXPECT_EQ(RefusalOf([this] { ReadOne(); }), expected);
    EXPECT_EQ(ReferencesOf(response), (Calls{"embed zu:datasources /controls/a/outputs"}));
    EXPECT_EQ(RefusalOf([this] { Update({{"enabled", true}}); }), expected);
    EXPECT_EQ(calls.All(), Calls{}); // no bracket was opened
}

TEST_F(ControlResourceTest, RefusesAProtocolThatThereIsNot)
{
    Refusal const expected{-999, "Control protocol type not recognized: 'b'."};

    EXPECT_EQ(RefusalOf([this] { resource->Document(Request({{"protocol", "b"}}), response); }), expected);
    EXPECT_EQ(RefusalOf([this] { resource->UpdateDocument(Request({{"protocol", "b"}}), {}); }), expected);
    EXPECT_EQ(RefusalOf([this] { resource->UpdateDocument(Request({}), {}); }),
              (Refusal{-997, "Request is missing service name"}));
}

TEST_F(ControlResourceTest, StartsAProtocolWithTheParametersOfTheSameRequest)
{
    uint32 startedWith = 0;
    instance.on["Enable(true)"] = [&] { startedWith = params->a.Get(); };

    Update({{"enabled", true}, {"parameters", {{"a", 7}}}});

    EXPECT_EQ(startedWith, 7u);
    EXPECT_TRUE(instance.enabled);
    EXPECT_EQ(calls.All(), (Calls{"BeginUpdateParameters", "ParamsUpdate", "Enable(true)", "EndUpdateParameters",
                                  "notify 2 /controls/a"}));
}

TEST_F(ControlResourceTest, LeavesAProtocolThatStandsSoAlreadyAlone)
{
    instance.enabled = true;

    Update({{"enabled", true}});

    EXPECT_EQ(calls.All(), emptyBracket);
}

TEST_F(ControlResourceTest, TakesTheParametersAlone)
{
    Update({{"parameters", {{"b", 30}}}});

    EXPECT_EQ(params->b.Get(), 30u);
    EXPECT_EQ(calls.All(),
              (Calls{"BeginUpdateParameters", "ParamsUpdate", "EndUpdateParameters", "notify 2 /controls/a"}));
}

TEST_F(ControlResourceTest, OpensAndClosesTheBracketForABodyWithNothingToChange)
{
    for (Json const& body :
         {Json::object(), Json{{"status", 9}, {"id", 5}}, Json::array({"enabled"}), Json("enabled"), Json(5), Json()})
    {
        calls.Clear();
        Update(body);

        EXPECT_EQ(calls.All(), emptyBracket) << body;
        ExpectUnchanged();
    }
    EXPECT_EQ(log.Lines(), std::vector<ZuTest::LogLine>{});
}

TEST_F(ControlResourceTest, ChangesNothingWhenAParameterIsRefused)
{
    auto const causes = CausesOf([this] { Update({{"enabled", true}, {"parameters", {{"a", 7}, {"b", 9}}}}); });

    EXPECT_EQ(causes, (std::vector<Refusal>{{-997, "B was set to be less than its minimum."},
                                            {-997, "B was set to be less than its minimum."}}));
    EXPECT_EQ(calls.All(), emptyBracket);
    ExpectUnchanged();
}

TEST_F(ControlResourceTest, ValidatesWhateverStandsBesideEnabled)
{
    auto const causes = CausesOf([this] { Update({{"enabled", true}, {"status", 9}}); });

    EXPECT_EQ(causes, (std::vector<Refusal>{{-997, "Status was set to a value outside of the enum."},
                                            {-997, "Status was set to a value outside of the enum."}}));
    EXPECT_EQ(calls.All(), emptyBracket);
    ExpectUnchanged();
}

TEST_F(ControlResourceTest, RefusesAWrongTypeWithoutAStatus)
{
    auto const causes = CausesOf([this] { Update({{"enabled", true}, {"status", "Running"}}); });

    std::string const text = "[json.exception.type_error.302] type must be number, but is string";
    EXPECT_EQ(causes, (std::vector<Refusal>{{0, text}, {0, text}}));
    EXPECT_EQ(calls.All(), emptyBracket);
    ExpectUnchanged();
}

TEST_F(ControlResourceTest, WarnsOfAnotherStatusAndDoesNotApplyIt)
{
    Update({{"enabled", true}, {"status", 0}, {"id", "other"}, {"unknown", 1}});

    EXPECT_TRUE(instance.enabled);
    EXPECT_EQ(ReadOne().at("status"), 1);
    EXPECT_EQ(ReadOne().at("id"), "a");
    EXPECT_EQ(log.Lines(),
              (std::vector{ZuTest::Warning("Zu::Params::ParamsBase::CheckValidation", "Status is read-only.")}));
}

TEST_F(ControlResourceTest, LeavesTheBracketOpenWhenTheProtocolRefusesItsParameters)
{
    instance.on = {{"ParamsUpdate", Failing(-5, "no")}};

    EXPECT_EQ(CausesOf([this] {
                  Update({{"enabled", true}, {"parameters", {{"a", 7}}}});
              }),
              (std::vector<Refusal>{{-5, "no"}}));

    EXPECT_EQ(calls.Count("EndUpdateParameters"), 0u);
    EXPECT_EQ(calls.All().back(), "ParamsUpdate");
}

TEST_F(ControlResourceTest, LeavesTheBracketOpenWhenTheProtocolCannotStart)
{
    instance.on = {{"Enable(true)", Failing(-5, "no")}};

    EXPECT_EQ(CausesOf([this] { Update({{"enabled", true}}); }), (std::vector<Refusal>{{-5, "no"}}));

    EXPECT_EQ(calls.Count("EndUpdateParameters"), 0u);
    EXPECT_EQ(calls.All().back(), "Enable(true)");
}

TEST_F(ControlResourceTest, TellsThatTheParametersStayWhenTheProtocolCannotStartWithThem)
{
    instance.on = {{"Enable(true)", Failing(-5, "no")}};

    EXPECT_EQ(CausesOf([this] {
                  Update({{"enabled", true}, {"parameters", {{"a", 7}}}});
              }),
              (std::vector<Refusal>{{-5, "no. The parameters of the request are kept."}, {-5, "no"}}));

    EXPECT_EQ(params->a.Get(), 7u);
    EXPECT_EQ(calls.Count("EndUpdateParameters"), 0u);
}

TEST_F(ControlResourceTest, TellsOfAChangeWhoeverMadeIt)
{
    instance.paramsEvent.Fire("a", false);
    manager.GetInstance("x").EndUpdateParameters();

    EXPECT_EQ(calls.All(), (Calls{"notify 2 /controls/a", "EndUpdateParameters", "notify 2 /controls/x"}));
}

TEST_F(ControlResourceTest, TellsOfTheWholeTreeBehindALoad)
{
    manager.loadEvent.Fire(State::Begin);
    instance.paramsEvent.Fire("a", true);
    instance.paramsEvent.Fire("a", false);
    EXPECT_EQ(calls.All(), Calls{});

    manager.loadEvent.Fire(State::End);

    EXPECT_EQ(calls.All(), (Calls{"notify 4 /controls"}));
    EXPECT_EQ(log.Lines(), (std::vector{ZuTest::Info("ZuControl::Protocol::ControlResource::OnPersistenceLoadEvent",
                                                     "Notifications saved in ControlResource: 2")}));
}

TEST_F(ControlResourceTest, LeavesTheEventsOfAllInstancesWhenItGoes)
{
    EXPECT_EQ(instance.paramsEvent.Count(), 1u);

    resource.reset();

    EXPECT_TRUE(instance.paramsEvent.Empty());
    EXPECT_TRUE(manager.loadEvent.Empty());
    EXPECT_EQ(calls.All(), (Calls{"RemoveParamsHandler", "RemoveParamsHandler"}));
}

TEST_F(ControlResourceTest, IsCalledNoMoreWhenItCouldNotLeaveAnEvent)
{
    instance.on["RemoveParamsHandler"] = Failing(-5, "no");

    resource.reset();
    instance.paramsEvent.Fire("a", true);

    EXPECT_EQ(calls.All(), (Calls{"RemoveParamsHandler"}));
    EXPECT_EQ(log.CountOfText("Exception thrown in destructor"), 1u);
}

TEST_F(ControlResourceTest, StoresNothingInTheRecordThatItReads)
{
    ZuTest::SealedRecord<ZuTest::NumbersGroup> record;
    instance.params = std::shared_ptr<Zu::Params::Group>(std::shared_ptr<void>(), &record.Get());
    resource = std::make_unique<ControlResource>(manager);
    ASSERT_TRUE(record.Seal());
    EXPECT_EXIT(std::_Exit(ReadOne().at("parameters").at("b") == 20 ? 0 : 1), testing::ExitedWithCode(0), "");
}

TEST_F(ControlResourceTest, ShowsAndDescribesOneRecordToManyReadersAtOnce)
{
    constexpr int READERS = 4;
    Json const document = ReadOne();
    auto const read = [this](bool wantsSchema) {
        ZuRest::ResponseInfo own;
        return resource->Document(Request({{"protocol", "a"}}, wantsSchema), own);
    };
    ZuTest::AllocationCounter const counter;
    Json const again = read(false); // kept: the library allocates to free a document
    uint64 const allocations = counter.Count();
    std::latch begin(READERS);
    auto const readMany = [&](bool wantsSchema) {
        begin.arrive_and_wait();
        for (int i = 0; i < 200; ++i)
        {
            ZuTest::AllocationCounter const ownCounter;
            Json found = read(wantsSchema);
            uint64 const ownAllocations = ownCounter.Count();
            if (wantsSchema)
            {
                EXPECT_EQ(found.at("_schema").at("properties").at("parameters").at("title"), "parameters");
                found.erase("_schema");
            }
            else
            {
                EXPECT_EQ(ownAllocations, allocations); // a read leaves nothing for the next one to make
            }
            EXPECT_EQ(found, document);
        }
    };
    std::vector<std::thread> readers;
    for (int i = 0; i < READERS; ++i)
    {
        readers.emplace_back(readMany, i % 2 == 0);
    }
    for (std::thread& reader : readers)
    {
        reader.join();
    }

    EXPECT_EQ(params->Schema()->Find("title"), &params->title.Node());
    EXPECT_EQ(params->Schema()->Find("sortOrder"), &params->sortOrder.Node());
}

} // namespace ZuControl::Protocol
