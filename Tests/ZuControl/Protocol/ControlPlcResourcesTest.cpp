#include "ZuControl/Protocol/ControlPlcResources.h"

#include "Support/RegisterBlocks.h"
#include "Support/ResourceFixture.h"
#include "ZuControl/Control/ControlMetrics.h"
#include "ZuControl/Control/IPreviewedActions.h"
#include "ZuControl/ControlProtocol/ProtocolOutputActionTarget.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyActionTarget.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "ZuControl/ControlProtocol/ProtocolScanOutputRegisterBlock.h"
#include "ZuControl/ControlProtocol/RegisterBlockParams.h"
#include "ZuControl/ControlProtocol/RegisterField.h"
#include "ZuControl/ControlProtocol/RegisterProtocolOutputMap.h"
#include "ZuControl/ControlProtocol/TextIdStandardProtocolOutputMap.h"
#include "ZuControl/Protocol/ControlDir.h"
#include "ZuRest/Answer.h"
#include "ZuRest/Request.h"
#include "ZuRest/ResourceRequestProcessor.h"
#include "ZuRest/ResourceRouter.h"

namespace ZuControl::Protocol
{

using namespace ControlProtocol;

/// A service with a register assembly of 100 addresses from 100 on, or with an output map, behind the REST tree.
class ControlPlcResourcesTest : public ZuTest::ResourceFixture
{
protected:
    ControlPlcResourcesTest()
    {
        assembly.AddSupportedBlockType(TypeOf("Four", 4, 10'000));
        assembly.AddSupportedBlockType(TypeOf("Few", 2, 1));
        auto sourced = ZuTest::TypeParams<ProtocolScanOutputRegisterBlock>("Value", 3);
        sourced.hasDataSource = true;
        assembly.AddSupportedBlockType(std::make_unique<ProtocolRegisterBlockInfo>(sourced));
        instance.assemblies["r"] = &assembly;
        instance.assemblyTarget = &assemblyActions;
    }

    static std::unique_ptr<ProtocolRegisterBlockInfo> TypeOf(char const* name, uint16 registers, uint16 most)
    {
        auto params = ZuTest::TypeParams<>(name, registers);
        params.maxInstanceCount = most;
        return std::make_unique<ProtocolRegisterBlockInfo>(params);
    }

    ZuRest::Answer Send(std::string const& method, std::string const& path, std::string const& body = "",
                        std::string const& ifMatch = "")
    {
        ZuRest::Request request;
        request.method = method;
        request.path = path;
        request.body = body;
        request.ifMatch = ifMatch;
        return processor.Process(request).answer;
    }

    /// The lines but those of the timer of the metrics, which fails beside a test that takes long: the protocol has none.
    std::vector<ZuTest::LogLine> LinesOfRequests()
    {
        std::vector<ZuTest::LogLine> lines = log.Lines();
        std::erase_if(lines, [](ZuTest::LogLine const& line) {
            return line.label.find("AsyncTimer") != std::string::npos ||
                   line.label.find("UpdateMetrics") != std::string::npos;
        });
        return lines;
    }

    Json Preview(Json const& body, std::string const& path = ASSEMBLY)
    {
        ZuRest::Answer const answer = Send("POST", path + "/preview", body.dump());
        EXPECT_EQ(answer.status, 200u) << answer.body;
        return Json::parse(answer.body);
    }

    /// Carries out a command that is not refused, and ends with an empty log.
    void Do(std::string const& command, Json const& arguments, std::string const& path = ASSEMBLY)
    {
        ZuRest::Answer const answer = Send("POST", path + "/commands/" + command, arguments.dump());
        ASSERT_LT(answer.status, 300u) << answer.body;
        log.Clear();
        calls.Clear();
    }

    void Place(std::vector<std::pair<char const*, uint16>> const& blocks)
    {
        Json list = Json::array();
        for (auto const& [source, id] : blocks)
        {
            list.push_back({{"type", "Value"}, {"dataSource", source}, {"displayName", source}, {"outputId", id}});
        }
        Do("add", {{"blocks", list}});
    }

    std::string TagOf(std::string const& path)
    {
        for (auto const& [name, value] : Send("GET", path).headers)
        {
            if (name == "ETag")
            {
                return value;
            }
        }
        return "";
    }

    uint32 Fingerprint()
    {
        return Json::parse(Send("GET", "/controls/a/plc").body).at("fingerprint").get<uint32>();
    }

    /// Lets the service have an output map in place of its assembly.
    void UseOutputs(IProtocolOutput& map, IControlActionTarget& actions)
    {
        instance.assemblies.clear();
        instance.assemblyTarget = nullptr;
        map.BeginLock();
        instance.outputs = const_cast<Zu::Params::Group*>(&map.OutputMap()); // the fake only reads it
        map.EndLock();
        instance.outputsTarget = &actions;
    }

    static constexpr char const* ASSEMBLY = "/controls/a/registerAssemblies/r";
    static constexpr char const* OUTPUTS = "/controls/a/outputs";

    ZuTest::FakeControlInstance& instance{manager.Put("a")}; // before the timers walk the set of instances
    ProtocolRegisterAssemblyBase assembly{true, 100, 199, "r"};
    ProtocolRegisterAssemblyActionTarget assemblyActions{assembly};
    ControlMetrics metrics{manager};
    ZuRest::ResourceRouter router;
    ControlDir dir{router, manager, metrics};
    ZuRest::ResourceRequestProcessor processor{router, "/relations/{rel}"};
};

TEST_F(ControlPlcResourcesTest, ShowsEachEntryAndAddressThatACompactionMoves)
{
    Place({{"p/a", 100}, {"p/b", 105}});

    Json const answer = Preview({{"command", "compact"}});

    EXPECT_EQ(answer.at("refused"), Json());
    EXPECT_EQ(answer.at("moved"), Json::parse(R"([{"from": 105, "to": 103, "registers": 3, "type": "Value",
        "displayName": "p/b", "source": "p/b"}])"));
    EXPECT_EQ(answer.at("added"), Json::array());
    EXPECT_EQ(answer.at("removed"), Json::array());
    EXPECT_EQ(answer.at("renamed"), Json::array());
    EXPECT_EQ(answer.at("addresses"), Json::parse(R"([
        {"address": 103, "count": 2, "before": null, "after": {"outputId": 103, "offset": 0}},
        {"address": 105, "count": 1, "before": {"outputId": 105, "offset": 0}, "after": {"outputId": 103, "offset": 2}},
        {"address": 106, "count": 2, "before": {"outputId": 105, "offset": 1}, "after": null}])"));
    EXPECT_EQ(answer.at("gaps"), Json::array());
    EXPECT_EQ(answer.at("use"), Json::parse(R"({"entries": 2, "addresses": 6, "of": 100})"));
    EXPECT_EQ(answer.at("firstFree"), 106);
}

TEST_F(ControlPlcResourcesTest, ShowsWhatIsAddedRemovedAndRenamed)
{
    Place({{"p/a", 100}, {"p/b", 103}, {"p/c", 110}});

    Json const answer =
        Preview({{{"command", "remove"}, {"arguments", {{"outputIdList", {{{"outputId", 103}}}}}}},
                 {{"command", "update"},
                  {"arguments", {{"outputId", 110}, {"newParams", {{"displayName", "C"}, {"dataSource", "p/d"}}}}}},
                 {{"command", "add"}, {"arguments", {{"blocks", {{{"type", "Four"}, {"outputId", 104}}}}}}}});

    EXPECT_EQ(answer.at("added"),
              Json::parse(R"([{"outputId": 104, "registers": 4, "type": "Four", "displayName": "Four name"}])"));
    EXPECT_EQ(answer.at("removed"), Json::parse(R"([{"outputId": 103, "registers": 3, "type": "Value",
        "displayName": "p/b", "source": "p/b"}])"));
    EXPECT_EQ(answer.at("renamed"), Json::parse(R"([{"outputId": 110, "displayName": {"from": "p/c", "to": "C"},
        "source": {"from": "p/c", "to": "p/d"}}])"));
    EXPECT_EQ(answer.at("moved"), Json::array());
    EXPECT_EQ(answer.at("addresses").size(), 4u);
    EXPECT_EQ(answer.at("gaps"), Json::parse(R"([{"address": 103, "count": 1}, {"address": 108, "count": 2}])"));
    EXPECT_EQ(answer.at("firstFree"), 103);
}

TEST_F(ControlPlcResourcesTest, ChangesNothingAndTellsNobody)
{
    Place({{"p/a", 100}, {"p/b", 105}});
    std::string const before = Send("GET", ASSEMBLY).body;
    for (ZuRest::IResource* const resource : router.Resources())
    {
        Listen(*resource);
    }

    Preview({{{"command", "compact"}},
             {{"command", "add"}, {"arguments", {{"blocks", {{{"type", "none"}}, {{"type", "Four"}}}}}}}});

    EXPECT_EQ(Send("GET", ASSEMBLY).body, before);
    EXPECT_EQ(calls.All(), Calls{});
    EXPECT_EQ(LinesOfRequests(), std::vector<ZuTest::LogLine>{});
}

TEST_F(ControlPlcResourcesTest, ForetellsTheFingerprint)
{
    Place({{"p/a", 100}, {"p/b", 105}});
    uint32 const before = Fingerprint();

    Json const answer = Preview({{"command", "compact"}});

    EXPECT_EQ(Fingerprint(), before);
    EXPECT_NE(answer.at("fingerprint"), before);
    Do("compact", Json::object());
    EXPECT_EQ(answer.at("fingerprint"), Fingerprint());
}

TEST_F(ControlPlcResourcesTest, RefusesExactlyAsTheCommand)
{
    Place({{"p/a", 100}});
    std::vector<std::pair<std::string, Json>> const refused = {
        {"Compact", Json::object()},
        {"jump", Json::object()},
        {"compact", {{"startingOutputId", 99}}},
        {"compact", {{"startingOutputId", "text"}}},
        {"compact", {{"startingOutputId", 199}}},
        {"update", Json::object()},
        {"update", {{"outputId", 150}}},
        {"remove", {{"outputIdList", {{{"outputId", 101}}}}}},
        {"add", {{"blocks", {{{"type", "Four"}, {"outputId", 98}}}}}},
    };
    for (auto const& [command, arguments] : refused)
    {
        Json answer = Preview({{"command", command}, {"arguments", arguments}});
        EXPECT_EQ(LinesOfRequests(), std::vector<ZuTest::LogLine>{}) << command;
        ZuRest::Answer const real = Send("POST", std::string(ASSEMBLY) + "/commands/" + command, arguments.dump());
        log.Clear();

        EXPECT_GE(real.status, 400u) << command;
        EXPECT_EQ(answer.at("refused"), Json::parse(real.body)) << command;
        EXPECT_EQ(answer.at("commands").size(), 1u);
        EXPECT_EQ(answer.at("addresses"), Json::array()) << command;
    }
}

TEST_F(ControlPlcResourcesTest, SaysWhichCommandOfAListIsRefusedAndShowsThoseBefore)
{
    Place({{"p/a", 100}, {"p/b", 105}});

    Json const answer =
        Preview({{{"command", "compact"}},
                 {{"command", "update"}, {"arguments", {{"outputId", 103}, {"newParams", {{"displayName", "B"}}}}}},
                 {{"command", "compact"}, {"arguments", {{"startingOutputId", 7}}}},
                 {{"command", "compact"}, {"arguments", {{"startingOutputId", 150}}}}});

    ASSERT_EQ(answer.at("commands").size(), 3u); // the last one is the refused one
    EXPECT_EQ(answer.at("refused").at("detail"), "Cannot compact blocks. The requested output id 7 cannot lie outside "
                                                 "the valid output id range [100, 199].");
    EXPECT_EQ(answer.at("moved").at(0).at("to"), 103);
    EXPECT_EQ(answer.at("renamed").at(0).at("displayName").at("to"), "B");
}

TEST_F(ControlPlcResourcesTest, ShowsTheRefusalsOfSingleEntriesThatTheCommandHides)
{
    Json const arguments = {{"blocks",
                             {{{"type", "Few"}, {"outputId", 110}},
                              {{"type", "Few"}, {"outputId", 120}},
                              {{"type", "Four"}, {"outputId", 109}},
                              {{"type", "Value"}}}}};

    Json const answer = Preview({{"command", "add"}, {"arguments", arguments}});

    EXPECT_EQ(answer.at("refused"), Json());
    EXPECT_EQ(answer.at("commands"), Json::parse(R"([{"command": "add", "refusedEntries": [
        {"entry": 1, "code": -997,
         "text": "Cannot add block. The maximum number of blocks of block type Few have already been added."},
        {"entry": 2, "code": -980, "text": "The block output id range [109 - 112] overlaps with the output id range [110 - 111] of an existing block: Few name."},
        {"entry": 3, "code": -997, "text": "Cannot add block. A data source is required for block type Value."}]}])"));
    EXPECT_EQ(answer.at("added").size(), 1u);
}

TEST_F(ControlPlcResourcesTest, RefusesAChangeOfAStateThatIsNoLongerThere)
{
    Place({{"p/a", 100}, {"p/b", 105}});
    std::string const tag = Preview({{"command", "compact"}}).at("etag");
    EXPECT_EQ(tag, TagOf(ASSEMBLY));
    std::string const compact = std::string(ASSEMBLY) + "/commands/compact";
    Do("remove", {{"outputIdList", {{{"outputId", 100}}}}});
    std::string const between = Send("GET", ASSEMBLY).body;

    ZuRest::Answer const refused = Send("POST", compact, "{}", tag);
    ZuRest::Answer const refusedPreview =
        Send("POST", std::string(ASSEMBLY) + "/preview", R"({"command": "compact"})", tag);

    EXPECT_EQ(refused.status, 412u);
    EXPECT_EQ(Json::parse(refused.body).at("detail"), "The document at /controls/a/registerAssemblies/r has changed.");
    EXPECT_EQ(refusedPreview.status, 412u);
    EXPECT_EQ(Send("GET", ASSEMBLY).body, between);
    EXPECT_EQ(Send("POST", compact, "{}", TagOf(ASSEMBLY)).status, 200u);
}

TEST_F(ControlPlcResourcesTest, RefusesBodiesThatNameNoCommand)
{
    std::vector<std::pair<std::string, uint32>> const bodies = {{"5", 422},
                                                                {"{}", 422},
                                                                {R"({"command": 5})", 422},
                                                                {R"([{"command": "compact"}, "x"])", 422},
                                                                {R"("compact")", 422},
                                                                {"[[]]", 422},
                                                                {"{", 400},
                                                                {"", 422}};
    for (auto const& [body, status] : bodies)
    {
        EXPECT_EQ(Send("POST", std::string(ASSEMBLY) + "/preview", body).status, status) << body;
    }
    Json const many(101, Json{{"command", "compact"}});
    ZuRest::Answer const answer = Send("POST", std::string(ASSEMBLY) + "/preview", many.dump());
    EXPECT_EQ(answer.status, 422u);
    EXPECT_EQ(Json::parse(answer.body).at("detail"), "A preview takes at most 100 commands.");
    EXPECT_EQ(Preview(Json::array()).at("commands"), Json::array());
}

TEST_F(ControlPlcResourcesTest, IsMissingWhereThereIsNothingToPreview)
{
    instance.assemblies.clear();
    instance.assemblyTarget = nullptr;

    std::string const body = R"({"command": "compact"})";
    EXPECT_EQ(Send("POST", std::string(ASSEMBLY) + "/preview", body).status, 404u);
    EXPECT_EQ(Send("POST", std::string(OUTPUTS) + "/preview", body).status, 404u);
    EXPECT_EQ(Send("POST", "/controls/none/outputs/preview", body).status, 404u);
    EXPECT_EQ(Send("GET", "/controls/a/plc").status, 404u);
}

TEST_F(ControlPlcResourcesTest, HasNoDocument)
{
    ZuRest::Answer const answer = Send("GET", std::string(ASSEMBLY) + "/preview");

    EXPECT_EQ(answer.status, 405u);
    EXPECT_EQ(answer.headers.back(), (std::pair<std::string, std::string>("Allow", "POST, OPTIONS")));
}

namespace
{

class UnknownActions : public ProtocolRegisterAssemblyActionTarget
{
public:
    using ProtocolRegisterAssemblyActionTarget::ProtocolRegisterAssemblyActionTarget;
};

class CheckedActions final : public UnknownActions, public IPreviewedActions
{
public:
    using UnknownActions::UnknownActions;

    void CheckArguments(Zu::Params::Group const& params) const override
    {
        if (dynamic_cast<CompactBlocksParams const&>(params).startingOutputId.Get() == 150)
        {
            ZU_THROW(Zu::Status::BAD_ARGUMENT, "Not to 150.");
        }
    }
};

} // namespace

TEST_F(ControlPlcResourcesTest, AnswersNotImplementedForActionsOfAnotherClass)
{
    ZuTest::NumbersActionTarget foreign{calls, {"compact"}};
    UnknownActions unknown{assembly};
    for (IControlActionTarget* const target :
         {static_cast<IControlActionTarget*>(&foreign), static_cast<IControlActionTarget*>(&unknown)})
    {
        instance.assemblyTarget = target;
        ZuRest::Answer const answer = Send("POST", std::string(ASSEMBLY) + "/preview", R"({"command": "compact"})");
        EXPECT_EQ(answer.status, 501u);
        EXPECT_EQ(Json::parse(answer.body).at("detail"),
                  "The commands at /controls/a/registerAssemblies/r have no preview.");
    }
}

TEST_F(ControlPlcResourcesTest, AsksActionsThatDeclareThemselvesForTheirCheck)
{
    CheckedActions actions{assembly};
    instance.assemblyTarget = &actions;

    EXPECT_EQ(Preview({{"command", "compact"}, {"arguments", {{"startingOutputId", 149}}}}).at("refused"), Json());
    Json const answer = Preview({{"command", "compact"}, {"arguments", {{"startingOutputId", 150}}}});
    EXPECT_EQ(answer.at("refused").at("detail"), "Not to 150.");
}

TEST_F(ControlPlcResourcesTest, TakesTenThousandEntries)
{
    ProtocolRegisterAssemblyBase large{true, 0, 65534, "r"};
    large.AddSupportedBlockType(TypeOf("Four", 4, 20'000));
    AddBlockParams blocks;
    for (uint32 i = 0; i < 10'000; ++i)
    {
        RegisterBlockParams& block = blocks.blocks.Add();
        block.type.Set("Four");
        block.outputId.Set(static_cast<uint16>(i * 5 + 5));
    }
    large.Add(blocks);
    ProtocolRegisterAssemblyActionTarget actions{large};
    instance.assemblies["r"] = &large;
    instance.assemblyTarget = &actions;

    Json const answer = Preview({{"command", "compact"}});

    EXPECT_EQ(answer.at("moved").size(), 10'000u);
    EXPECT_EQ(answer.at("use"), Json::parse(R"({"entries": 10000, "addresses": 40000, "of": 65535})"));
    EXPECT_EQ(answer.at("firstFree"), 40'000);
}

TEST_F(ControlPlcResourcesTest, ShowsSourcesInEveryScript)
{
    Json const sources = {"größe", "ширина", "宽度", "العرض", "幅🙂", "a\"b\\c\n", std::string("nul\0byte", 8)};
    Json blocks = Json::array();
    for (Json const& source : sources)
    {
        blocks.push_back({{"type", "Value"}, {"dataSource", source}});
    }

    Json const answer = Preview({{"command", "add"}, {"arguments", {{"blocks", blocks}}}});

    ASSERT_EQ(answer.at("added").size(), sources.size());
    for (std::size_t i = 0; i < sources.size(); ++i)
    {
        EXPECT_EQ(answer.at("added").at(i).at("source"), sources.at(i));
    }
    Do("add", {{"blocks", blocks}});
    EXPECT_EQ(answer.at("fingerprint"), Fingerprint());
}

TEST_F(ControlPlcResourcesTest, PreviewsARegisterMap)
{
    RegisterProtocolOutputMap map(100, 50, 2, 10);
    ProtocolOutputActionTarget actions(map);
    UseOutputs(map, actions);
    auto const item = [](char const* source, uint16 id, uint16 size) {
        return Json{{"source", source}, {"outputId", id}, {"outputSize", size}};
    };
    Do("add", item("b", 102, 4), OUTPUTS);
    Do("add", item("c", 104, 4), OUTPUTS);

    Json inserted = item("a", 102, 4);
    inserted["autoShift"] = true;
    Json const answer = Preview({{"command", "add"}, {"arguments", inserted}}, OUTPUTS);

    EXPECT_EQ(answer.at("refused"), Json());
    EXPECT_EQ(answer.at("added"), Json::parse(R"([{"outputId": 102, "registers": 2, "source": "a"}])"));
    EXPECT_EQ(answer.at("moved"), Json::parse(R"([{"from": 102, "to": 104, "registers": 2, "source": "b"},
                                                  {"from": 104, "to": 106, "registers": 2, "source": "c"}])"));
    EXPECT_EQ(answer.at("gaps"), Json::parse(R"([{"address": 100, "count": 2}])"));
    Do("add", inserted, OUTPUTS);
    EXPECT_EQ(answer.at("fingerprint"), Fingerprint());
}

TEST_F(ControlPlcResourcesTest, PreviewsATextMapAndAnswersAnAddAllThatFailsInPartAsTheCommandDoes)
{
    TextIdStandardProtocolOutputMap map(3);
    ProtocolOutputActionTarget actions(map);
    UseOutputs(map, actions);
    Do("add", {{"source", "s1"}, {"outputId", "old"}}, OUTPUTS);

    Json const list = {
        {{"source", "s1"}}, {{"source", "s2"}}, {{"source", ""}}, {{"source", "s3"}}, {{"source", "s4"}}};
    Json const answer =
        Preview({{{"command", "addAll"}, {"arguments", {{"map", list}}}},
                 {{"command", "updateId"}, {"arguments", {{"map", {{{"outputId", "old"}}, {{"outputId", "new"}}}}}}}},
                OUTPUTS);

    EXPECT_EQ(answer.at("refused"), Json());
    EXPECT_EQ(answer.at("commands").at(0).at("refusedEntries"), Json::parse(R"([
        {"entry": 0, "code": -987, "text": "Data source s1 already exists"},
        {"entry": 2, "code": -997, "text": "Data source  is invalid"},
        {"entry": 4, "code": -977, "text": "status -977"}])"));
    EXPECT_EQ(answer.at("moved"), Json::parse(R"([{"from": "old", "to": "new", "registers": 1, "source": "s1"}])"));
    EXPECT_EQ(answer.at("added").size(), 2u);
    EXPECT_EQ(LinesOfRequests(), std::vector<ZuTest::LogLine>{});
}

TEST_F(ControlPlcResourcesTest, RefusesCommandsOfAMapExactlyAsTheCommand)
{
    RegisterProtocolOutputMap map(100, 50, 2, 10);
    ProtocolOutputActionTarget actions(map);
    UseOutputs(map, actions);
    Do("add", {{"source", "a"}, {"outputId", 100}, {"outputSize", 4}}, OUTPUTS);
    std::vector<std::pair<std::string, Json>> const refused = {
        {"jump", Json::object()},
        {"add", {{"source", "a"}, {"outputId", 110}, {"outputSize", 4}}},
        {"add", {{"source", "b"}, {"outputId", 99}, {"outputSize", 4}}},
        {"add", {{"source", "b"}, {"outputId", 100}, {"outputSize", 4}}},
        {"remove", {{"outputId", 101}}},
        {"updateId", {{"map", {{{"outputId", 101}}}}}},
        {"updateId", {{"map", {{{"outputId", 101}}, {{"outputId", 120}}}}}},
    };
    for (auto const& [command, arguments] : refused)
    {
        Json const answer = Preview({{"command", command}, {"arguments", arguments}}, OUTPUTS);
        EXPECT_EQ(LinesOfRequests(), std::vector<ZuTest::LogLine>{}) << command;
        ZuRest::Answer const real = Send("POST", std::string(OUTPUTS) + "/commands/" + command, arguments.dump());
        log.Clear();
        EXPECT_GE(real.status, 400u);
        EXPECT_EQ(answer.at("refused"), Json::parse(real.body)) << command;
    }
}

TEST_F(ControlPlcResourcesTest, ShowsTheLayoutsThatTheFingerprintCovers)
{
    Place({{"p/a", 100}});

    EXPECT_EQ(Json::parse(Send("GET", "/controls/a/plc").body).at("layouts"), Json::parse(R"([{"kind": 1, "id": "r",
        "isAddressed": true, "itemSize": 0, "entries": [{"textId": "", "outputId": 100, "registers": 3,
        "bytesPerRegister": 1, "isBigEndian": true, "areBytesSwapped": false, "outputSize": 0, "dataOffset": 0, "dataLength": 0,
        "type": "Value", "source": "p/a", "scannerId": "", "displayName": "p/a"}]}])"));
}

TEST_F(ControlPlcResourcesTest, HasNoFingerprintOfAMapOfAnotherClass)
{
    ZuTest::NumbersGroup foreign;
    instance.outputs = &foreign;
    Place({{"p/a", 100}});

    EXPECT_EQ(Send("GET", "/controls/a/plc").status, 404u);
    EXPECT_EQ(Preview({{"command", "compact"}}).at("fingerprint"), Json());
}

namespace
{

/// An assembly that does not list the types of its blocks.
class SilentAssembly final : public ProtocolRegisterAssemblyBase
{
public:
    SilentAssembly() : ProtocolRegisterAssemblyBase(true, 100, 199, "q")
    {
    }

    std::vector<std::unique_ptr<ProtocolRegisterBlockInfo>> const& SupportedRegisterBlockTypes() override
    {
        return none;
    }

private:
    std::vector<std::unique_ptr<ProtocolRegisterBlockInfo>> const none;
};

} // namespace

TEST_F(ControlPlcResourcesTest, HasNoFingerprintOfABlockWithoutAType)
{
    SilentAssembly silent;
    silent.AddSupportedBlockType(TypeOf("Four", 4, 1));
    AddBlockParams params;
    params.blocks.Add().type.Set("Four");
    silent.Add(params);
    instance.assemblies["q"] = &silent;

    EXPECT_EQ(Send("GET", "/controls/a/plc").status, 404u);
}

class ControlPlcFilesTest : public ControlPlcResourcesTest
{
protected:
    ZuRest::Answer GetFile(std::string const& format)
    {
        ZuRest::Request request;
        request.path = "/controls/a/plc";
        request.query = "format=" + format;
        return processor.Process(request).answer;
    }
};

TEST_F(ControlPlcFilesTest, HaveATypeANameAndTheFingerprint)
{
    Place({{"p/a", 100}});

    ZuRest::Answer const csv = GetFile("csv");

    EXPECT_EQ(csv.status, 200u);
    EXPECT_EQ(csv.contentType, "text/csv; charset=utf-8; header=present");
    EXPECT_EQ(csv.headers[0],
              (std::pair<std::string, std::string>("Content-Disposition", "attachment; filename=\"a.csv\"")));
    EXPECT_NE(csv.body.find("," + std::to_string(Fingerprint()) + ",registers\r\n"), std::string::npos);
    EXPECT_EQ(Json::parse(GetFile("json").body).at("fingerprint"), Fingerprint());
    EXPECT_EQ(Json::parse(GetFile("json").body).at("tags").at(0).at("name"), "p_a_raw");
}

TEST_F(ControlPlcFilesTest, OfAnUnknownFormatAreRefusedWithTheList)
{
    ZuRest::Answer const refused = GetFile("xml%22");

    EXPECT_EQ(refused.status, 406u);
    EXPECT_EQ(Json::parse(refused.body)
                  .at("detail")
                  .get<std::string>()
                  .find("There is no format \"xml\"\". The formats are csv, json, json-schema, node-red, python"),
              0u)
        << refused.body;
}

TEST_F(ControlPlcFilesTest, OfRegistersOfOneByteAreNoPrograms)
{
    Place({{"p/a", 100}});

    ZuRest::Answer const refused = GetFile("python");

    EXPECT_EQ(refused.status, 406u);
    EXPECT_EQ(Json::parse(refused.body).at("detail"), "The format python is for services with registers of two bytes.");
}

TEST_F(ControlPlcFilesTest, OfAServiceWithoutRegistersAreRefused)
{
    instance.assemblies.clear();

    ZuRest::Answer const refused = GetFile("csv");

    EXPECT_EQ(refused.status, 404u);
    EXPECT_EQ(Json::parse(refused.body).at("detail"), "The service a has no registers.");
}

namespace
{

/// Its fields are others each time.
struct RestlessBlock final : ProtocolRegisterBlock, IDescribedBlock
{
    using ProtocolRegisterBlock::ProtocolRegisterBlock;

    std::vector<RegisterField> Fields() const override
    {
        RegisterField field;
        field.name = "field" + std::to_string(++looks);
        field.type = FieldType::USINT;
        return {field};
    }

    static inline int looks = 0;
};

} // namespace

TEST_F(ControlPlcFilesTest, OfAMapThatIsBeingChangedAreRefused)
{
    assembly.AddSupportedBlockType(
        std::make_unique<ProtocolRegisterBlockInfo>(ZuTest::TypeParams<RestlessBlock>("Restless", 1)));
    Do("add", {{"blocks", {{{"type", "Restless"}, {"outputId", 100}}}}});

    ZuRest::Answer const refused = GetFile("csv");

    EXPECT_EQ(refused.status, 503u);
    EXPECT_EQ(Json::parse(refused.body).at("detail"), "The map is being changed.");
}

} // namespace ZuControl::Protocol
