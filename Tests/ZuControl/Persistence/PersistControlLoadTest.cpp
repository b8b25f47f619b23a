#include "ZuControl/Persistence/InstanceWithStore.h"

#include "ZuApi/JsonSerializer.h"
#include "ZuControl/Control/IControlActionTarget.h"

#include <algorithm>
#include <stdexcept>

namespace ZuControl
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;
using Lines = std::vector<ZuTest::LogLine>;

/// The values that a load applies, and the log lines and the state after a failed load.
class PersistControlLoadTest : public InstanceWithStore
{
protected:
    using Parameters = Json;

    void BuildFull()
    {
        Build({.map = MapKind::STANDARD, .assemblies = 2});
    }

    /// Loads these settings. Sets `made` to the calls and `lines` to the log lines of the load, and returns its
    /// refusal.
    Refusal Loaded(Json const& settings)
    {
        StoreSettings(settings);
        Forget();
        Refusal const refusal = RefusalOf([this] { Load(); });
        made = hooks.calls.All();
        lines = log.LinesWithShortTraces();
        return refusal;
    }

    bool Called(char const* call) const
    {
        return std::find(made.begin(), made.end(), call) != made.end();
    }

    /// Expects that `count` updates were begun and ended.
    void ExpectBrackets(std::size_t count)
    {
        EXPECT_EQ(hooks.calls.Count("BeginUpdate"), count);
        EXPECT_EQ(hooks.calls.Count("EndUpdate"), count);
    }

    static ZuTest::LogLine Dev(std::string const& function, std::string const& text)
    {
        return ZuTest::Error("ZuControl::PersistControl::" + function, text);
    }

    static ZuTest::LogLine DevWarning(std::string const& function, std::string const& text)
    {
        return ZuTest::Warning("ZuControl::PersistControl::" + function, text);
    }

    /// The lines of the inner layer of the parameters, respectively the outputs.
    static Lines ParamsRejected(ZuTest::LogLine const& entry)
    {
        return {ZuTest::UserWarning(
                    "Error updating parameters for service x. Parameters may require manual configuration."),
                Dev("LoadControlInstanceParams", "Error updating parameters for service x"), entry,
                ZuTest::BackTrace()};
    }

    static Lines ParamsNotLoaded(ZuTest::LogLine const& entry)
    {
        return {
            ZuTest::UserWarning("Error loading parameters for service x. Parameters may require manual configuration."),
            Dev("LoadControlInstanceParams", "EXCEPTION THROWN: "), entry, ZuTest::BackTrace()};
    }

    static Lines OutputsRejected(ZuTest::LogLine const& entry)
    {
        return {ZuTest::UserWarning(
                    "Error adding connections for service x. Connections may require manual configuration."),
                Dev("LoadControlInstanceOutputs", "Error adding connections for service x"), entry,
                ZuTest::BackTrace()};
    }

    static Lines OutputsNotLoaded(ZuTest::LogLine const& entry)
    {
        return {ZuTest::UserWarning(
                    "Error loading connections for service x. Connections may require manual configuration."),
                Dev("LoadControlInstanceOutputs", "EXCEPTION THROWN: "), entry, ZuTest::BackTrace()};
    }

    static Lines AssemblyRejected(std::string const& id, ZuTest::LogLine const& entry)
    {
        return {ZuTest::UserWarning("Error filling connection map " + id +
                                    " for service x. Connection map may require manual configuration."),
                Dev("LoadRegisterAssemblyEntry", "Error filling connection map " + id + " for service x"), entry,
                ZuTest::BackTrace()};
    }

    static Lines BlocksRejected(std::string const& id, ZuTest::LogLine const& entry)
    {
        return {Dev("LoadRegisterAssemblyBlocks", "Loading register assembly " + id + " blocks for service x"), entry,
                ZuTest::BackTrace()};
    }

    static Lines AssemblyNotLoaded(std::string const& id, ZuTest::LogLine const& entry)
    {
        return {ZuTest::UserWarning("Error loading connection map " + id +
                                    " for service x. Connection map may require manual configuration."),
                Dev("LoadRegisterAssemblyEntry", "EXCEPTION THROWN: "), entry, ZuTest::BackTrace()};
    }

    static Lines Joined(std::initializer_list<Lines> parts)
    {
        Lines all;
        for (Lines const& part : parts)
        {
            all.insert(all.end(), part.begin(), part.end());
        }
        return all;
    }

    static Json Assembly(std::string const& id, Json const& blocks)
    {
        return {{"properties", {{"id", id}}}, {"blocks", blocks}};
    }

    static Json Block(char const* type, uint16 id)
    {
        return {{"type", type}, {"outputId", id}};
    }

    static Json Item(uint16 id, char const* source)
    {
        return {{"outputId", id}, {"source", source}};
    }

    /// Settings with a value to apply in every part.
    static Json Full()
    {
        return {{"enabled", true},
                {"parameters", {{"port", 7}}},
                {"parametersVersion", "1"},
                {"outputs", {{"map", List({Item(5, "a")})}}},
                {"registerAssemblyList", List({Assembly("r0", List({Block("Plain", 10)}))})}};
    }

    static Json List(std::vector<Json> const& entries)
    {
        return Json(entries);
    }

    static Json With(Json settings, char const* key, Json const& value)
    {
        settings[key] = value;
        return settings;
    }

    static Json Without(Json settings, char const* key)
    {
        settings.erase(key);
        return settings;
    }

    Refusal const done{1, ""};
    Refusal const partial{0, ""};
    Calls made;
    Lines lines;
};

TEST_F(PersistControlLoadTest, AppliesAllPartsInTheirBracketsAndStartsLast)
{
    BuildFull();

    EXPECT_EQ(Loaded(Full()), done);

    EXPECT_EQ(made, (Calls{"ResetParams",
                           "Map.Clear",
                           "OutputsUpdate",
                           "UpdateOutputMap(100)",
                           "ConfigureDefaultRegisterAssembly",
                           "r0.ResetRegisterAssembly",
                           "r0.Add",
                           "r1.ResetRegisterAssembly",
                           "r1.Add",
                           "BeginUpdate",
                           "Params",
                           "ParamsUpdate",
                           "EndUpdate",
                           "BeginUpdate",
                           "Map.Clear",
                           "OutputsUpdate",
                           "UpdateOutputMap(100)",
                           "EndUpdate",
                           "BeginUpdate",
                           "r0.ResetRegisterAssembly",
                           "r0.Add",
                           "RegisterAssemblyUpdate(r0)",
                           "UpdateOutputMap(100)",
                           "EndUpdate",
                           "Start",
                           "AddResultHandler(100)"}));
    EXPECT_TRUE(lines.empty());
}

TEST_F(PersistControlLoadTest, LeavesWhatADocumentDoesNotNameAtItsDefault)
{
    BuildFull();
    Load();
    Loaded(Full());

    EXPECT_EQ(Loaded({{"enabled", true}}), done);

    EXPECT_EQ(protocol->params.port.Get(), 1000);
    EXPECT_EQ(Entries(), "");
    EXPECT_EQ(Blocks(), "0 Single");
    EXPECT_TRUE(lines.empty());
}

TEST_F(PersistControlLoadTest, TellsTheListenersOfEachPart)
{
    BuildFull();
    Calls told;
    instance->AddParamsUpdatedEventHandler(
        [&](std::string const& type, bool notify) { told.push_back("params " + type + (notify ? " true" : "")); });
    instance->AddOutputsUpdatedEventHandler(
        [&](std::string const& type, bool notify) { told.push_back("outputs " + type + (notify ? " true" : "")); });
    instance->AddRegisterAssemblyUpdatedEventHandler(
        [&](std::string const& type, std::string const& id) { told.push_back("assembly " + type + " " + id); });

    Loaded(Full());

    EXPECT_EQ(told, (Calls{"params x true", "outputs x true", "assembly x r0"}));
}

// Parameters

TEST_F(PersistControlLoadTest, DoesNotLookAtTheVersionOfParametersThatAreNotThere)
{
    BuildFull();

    EXPECT_EQ(Loaded(With(Without(Full(), "parameters"), "parametersVersion", "77")), done);

    EXPECT_EQ(protocol->params.port.Get(), 1000);
    EXPECT_EQ(Entries(), "5 a");
    EXPECT_TRUE(lines.empty());
}

TEST_F(PersistControlLoadTest, SkipsAllSettingsForParametersWithoutAVersionAndStartsAllTheSame)
{
    BuildFull();

    EXPECT_EQ(Loaded(Without(Full(), "parametersVersion")), partial);

    EXPECT_EQ(lines, Joined({{ZuTest::UserWarning("Missing parameters version for service x. Parameters may require "
                                                  "manual configuration."),
                              DevWarning("ParametersVersionSupported", "Missing parameters version for service x")},
                             ParamsNotLoaded(ZuTest::CaughtEntry(-989, ""))}));
    ExpectBrackets(0);
    EXPECT_TRUE(instance->IsEnabled());
    EXPECT_EQ(protocol->params.port.Get(), 1000);
    EXPECT_EQ(Entries(), "");
    EXPECT_EQ(Blocks(), "0 Single");
}

TEST_F(PersistControlLoadTest, SkipsAllSettingsForParametersOfAnotherVersion)
{
    BuildFull();

    EXPECT_EQ(Loaded(With(Full(), "parametersVersion", "1.0")), partial);

    EXPECT_EQ(lines, Joined({{ZuTest::UserWarning("Unsupported parameters version for service x. Parameters may "
                                                  "require manual configuration."),
                              DevWarning("ParametersVersionSupported",
                                         "Unsupported parameters version for service x. Expected: 1, version in "
                                         "config: 1.0")},
                             ParamsNotLoaded(ZuTest::CaughtEntry(-989, ""))}));
    ExpectBrackets(0);
    EXPECT_TRUE(instance->IsEnabled());
    EXPECT_EQ(Entries(), "");
}

TEST_F(PersistControlLoadTest, TakesAVersionThatIsNoTextForAnErrorOfTheOuterLayerOnly)
{
    BuildFull();

    EXPECT_EQ(Loaded(With(Full(), "parametersVersion", 1)), partial);

    EXPECT_EQ(lines, ParamsNotLoaded(
                         ZuTest::CaughtForeign("[json.exception.type_error.302] type must be string, but is number")));
    ExpectBrackets(0);
}

TEST_F(PersistControlLoadTest, KeepsTheParametersAheadOfOneThatIsRejected)
{
    BuildFull();

    EXPECT_EQ(Loaded(With(Full(), "parameters", {{"port", 7}, {"name", 5}, {"secure", true}})), partial);

    EXPECT_EQ(lines, ParamsRejected(
                         ZuTest::CaughtForeign("[json.exception.type_error.302] type must be string, but is number")));
    ExpectBrackets(1);
    EXPECT_FALSE(Called("ParamsUpdate"));
    EXPECT_EQ(protocol->params.port.Get(), 7);
    EXPECT_FALSE(protocol->params.secure.Get());
    EXPECT_TRUE(instance->IsEnabled());
    EXPECT_EQ(Entries(), "");
    EXPECT_EQ(Blocks(), "0 Single");
}

TEST_F(PersistControlLoadTest, RejectsParametersThatAreNoObject)
{
    BuildFull();

    EXPECT_EQ(Loaded(With(Full(), "parameters", nullptr)), partial);

    EXPECT_EQ(lines, ParamsRejected(
                         ZuTest::CaughtForeign("[json.exception.type_error.302] type must be object, but is null")));
    ExpectBrackets(1);
}

TEST_F(PersistControlLoadTest, RejectsParametersThatTheProtocolRefuses)
{
    BuildFull();
    hooks.on["ParamsUpdate"] = [] { ZU_THROW(-997, "no such port"); };

    EXPECT_EQ(Loaded(Full()), partial);

    EXPECT_EQ(lines, ParamsRejected(ZuTest::CaughtEntry(-997, "no such port")));
    ExpectBrackets(1);
    EXPECT_EQ(protocol->params.port.Get(), 7);
    EXPECT_EQ(Entries(), "");
}

TEST_F(PersistControlLoadTest, ClosesTheBracketAlsoBehindWhatIsNoException)
{
    BuildFull();
    hooks.on["ParamsUpdate"] = [] { throw 42; };

    EXPECT_EQ(Loaded(Full()), partial);

    Lines expected = ParamsRejected(ZuTest::CaughtForeign(Zu::UNKNOWN_EXCEPTION));
    expected.resize(3); // it has no back trace
    EXPECT_EQ(lines, expected);
    ExpectBrackets(1);
    EXPECT_TRUE(instance->IsEnabled());
}

TEST_F(PersistControlLoadTest, WritesTheOuterLinesAloneWhenTheUpdateOfParametersCannotBegin)
{
    BuildFull();
    hooks.on["BeginUpdate"] = [] { ZU_THROW(-976, "busy"); };

    EXPECT_EQ(Loaded(Full()), partial);

    EXPECT_EQ(lines, ParamsNotLoaded(ZuTest::CaughtEntry(-976, "busy")));
    EXPECT_FALSE(Called("EndUpdate"));
    EXPECT_FALSE(Called("ParamsUpdate"));
    EXPECT_TRUE(instance->IsEnabled());
}

TEST_F(PersistControlLoadTest, WritesBothLayersWhenTheUpdateOfRejectedParametersCannotEndEither)
{
    BuildFull();
    hooks.on["ParamsUpdate"] = [] { ZU_THROW(-997, "no such port"); };
    hooks.on["EndUpdate"] = [] { throw std::runtime_error("stuck"); };

    EXPECT_EQ(Loaded(Full()), partial);

    EXPECT_EQ(lines, Joined({ParamsRejected(ZuTest::CaughtEntry(-997, "no such port")),
                             ParamsNotLoaded(ZuTest::CaughtForeign("stuck"))}));
}

TEST_F(PersistControlLoadTest, IgnoresParametersThatTheProtocolDoesNotHave)
{
    BuildFull();

    EXPECT_EQ(Loaded(With(Full(), "parameters", {{"limits", {{"low", 4}, {"other", 1}}}, {"what", {1, 2}}})), done);

    EXPECT_EQ(protocol->params.limits.low.Get(), 4);
    EXPECT_EQ(protocol->params.limits.high.Get(), 0.5);
    EXPECT_TRUE(lines.empty());
}

// Outputs

TEST_F(PersistControlLoadTest, KeepsTheOutputsAheadOfOneThatIsRejected)
{
    BuildFull();

    EXPECT_EQ(Loaded(With(Full(), "outputs", {{"map", List({Item(5, "a"), Item(5, "b"), Item(6, "c")})}})), partial);

    EXPECT_EQ(lines, Joined({{ZuTest::UserError("Unable to add data source b. The specified address would cause the "
                                                "selected source to overlap addresses used by an existing data "
                                                "source."),
                              ZuTest::Error("ZuControl::ControlProtocol::ProtocolOutputBase::Add_Helper",
                                            "Unable to add data source b. The specified address would cause the "
                                            "selected source to overlap addresses used by an existing data source.")},
                             OutputsRejected(ZuTest::CaughtEntry(-997, ""))}));
    ExpectBrackets(2);
    EXPECT_EQ(hooks.calls.Count("OutputsUpdate"), 1u); // the call of the reset
    EXPECT_TRUE(instance->IsEnabled());
    EXPECT_EQ(protocol->params.port.Get(), 7);
    EXPECT_EQ(Entries(), "5 a");
    EXPECT_EQ(Blocks(), "0 Single");
}

TEST_F(PersistControlLoadTest, RejectsOutputsThatTheProtocolRefuses)
{
    BuildFull();
    uint64 updates = 0;
    hooks.on["OutputsUpdate"] = [&updates] {
        if (++updates == 2) // the first update is that of the reset
        {
            ZU_THROW(-996);
        }
    };

    EXPECT_EQ(Loaded(Full()), partial);

    EXPECT_EQ(lines, OutputsRejected(ZuTest::CaughtEntry(-996, "")));
    ExpectBrackets(2);
    EXPECT_EQ(Entries(), "5 a");
}

TEST_F(PersistControlLoadTest, WritesTheOuterLinesAloneWhenTheUpdateOfOutputsCannotBegin)
{
    BuildFull();
    hooks.on["BeginUpdate"] = [] { ZU_THROW(-976, "busy"); };

    EXPECT_EQ(Loaded(Without(Full(), "parameters")), partial);

    EXPECT_EQ(lines, OutputsNotLoaded(ZuTest::CaughtEntry(-976, "busy")));
    EXPECT_FALSE(Called("EndUpdate"));
}

TEST_F(PersistControlLoadTest, WritesTheOuterLinesWhenTheUpdateOfOutputsCannotEnd)
{
    BuildFull();
    instance->AddOutputsUpdatedEventHandler([](std::string const&, bool) { throw std::runtime_error("listener"); });

    EXPECT_EQ(Loaded(Full()), partial);

    EXPECT_EQ(lines, OutputsNotLoaded(ZuTest::CaughtForeign("listener")));
    EXPECT_EQ(Entries(), "5 a");
    EXPECT_EQ(Blocks(), "0 Single");
}

TEST_F(PersistControlLoadTest, TakesOneRecordForAllEntriesOfTheMap)
{
    Build({.map = MapKind::STANDARD});

    EXPECT_EQ(Loaded({{"outputs", {{"map", List({Item(5, "a"), {{"source", "b"}}})}}}}), partial);

    EXPECT_EQ(Entries(), "5 a"); // the second entry has the id of the first
    EXPECT_EQ(lines.back(), ZuTest::BackTrace());
    EXPECT_EQ(lines[lines.size() - 2], ZuTest::CaughtEntry(-997, ""));
}

TEST_F(PersistControlLoadTest, KeepsTheLeaveToShiftForAllEntriesBehindTheOneThatGivesIt)
{
    Build({.map = MapKind::STANDARD});
    Json first = Item(5, "a");
    first["autoShift"] = true;

    EXPECT_EQ(Loaded({{"outputs", {{"map", List({first, Item(5, "b"), Item(5, "c")})}}}}), done);

    EXPECT_EQ(Entries(), "5 c, 6 b, 7 a");
    EXPECT_TRUE(lines.empty());
}

TEST_F(PersistControlLoadTest, IgnoresWhatAnEntryNamesAndTheActionLacks)
{
    Build({.map = MapKind::STANDARD});
    Json item = Item(5, "a");
    item["outputSize"] = "none";

    EXPECT_EQ(Loaded({{"outputs", {{"map", List({item})}, {"attributes", 3}, {"acceptedDataFormats", "none"}}}}), done);

    EXPECT_EQ(Entries(), "5 a");
}

class PersistControlNoMap : public PersistControlLoadTest, public testing::WithParamInterface<char const*>
{
};

TEST_P(PersistControlNoMap, PassesOverOutputsWithoutAMap)
{
    BuildFull();

    EXPECT_EQ(Loaded(With(Full(), "outputs", Json::parse(GetParam()))), done);

    EXPECT_EQ(Entries(), "");
    EXPECT_EQ(Blocks(), "10 Plain");
    EXPECT_TRUE(lines.empty());
}

INSTANTIATE_TEST_SUITE_P(Every, PersistControlNoMap,
                         testing::Values("{}", "null", "[]", R"(["map"])", "4", R"("map")", R"({"Map":[1]})"));

class PersistControlEmptyMap : public PersistControlLoadTest, public testing::WithParamInterface<char const*>
{
};

TEST_P(PersistControlEmptyMap, TakesWhatHasNoElementsForAnEmptyMap)
{
    BuildFull();

    EXPECT_EQ(Loaded(With(Full(), "outputs", {{"map", Json::parse(GetParam())}})), done);

    EXPECT_EQ(Entries(), "");
    EXPECT_EQ(hooks.calls.Count("BeginUpdate"), 3u);
    EXPECT_TRUE(lines.empty());
}

INSTANTIATE_TEST_SUITE_P(Every, PersistControlEmptyMap, testing::Values("[]", "{}", "null"));

class PersistControlWrongMap : public PersistControlLoadTest, public testing::WithParamInterface<char const*>
{
};

TEST_P(PersistControlWrongMap, RejectsAMapThatIsNoArrayAtItsFirstElement)
{
    BuildFull();
    Json const map = Json::parse(GetParam());

    EXPECT_EQ(Loaded(With(Full(), "outputs", {{"map", map}})), partial);

    EXPECT_EQ(lines, OutputsRejected(ZuTest::CaughtForeign("[json.exception.type_error.305] cannot use operator[] "
                                                           "with a numeric argument with " +
                                                           std::string(map.type_name()))));
    EXPECT_EQ(hooks.calls.Count("Map.Clear"), 2u); // one call of the reset, one of the load
    EXPECT_EQ(Entries(), "");
}

INSTANTIATE_TEST_SUITE_P(Every, PersistControlWrongMap,
                         testing::Values(R"({"0":{"outputId":5,"source":"a"}})", R"("a")", "3", "true", "1.5"));

TEST_F(PersistControlLoadTest, RejectsAnEntryThatIsNoObject)
{
    BuildFull();

    EXPECT_EQ(Loaded(With(Full(), "outputs", {{"map", List({Item(5, "a"), 3})}})), partial);

    EXPECT_EQ(lines, OutputsRejected(
                         ZuTest::CaughtForeign("[json.exception.type_error.302] type must be object, but is number")));
    EXPECT_EQ(Entries(), "5 a");
}

TEST_F(PersistControlLoadTest, UpdatesTheOutputsAlsoWhereNothingCanAddThem)
{
    Build({.map = MapKind::STANDARD, .hasOutputsTarget = false});

    EXPECT_EQ(Loaded({{"outputs", {{"map", List({Item(5, "a")})}}}}), done);

    EXPECT_EQ(hooks.calls.Count("OutputsUpdate"), 2u);
    EXPECT_EQ(Entries(), "");
    EXPECT_TRUE(lines.empty());
}

TEST_F(PersistControlLoadTest, RejectsOutputsThatHaveNoArguments)
{
    Build({.map = MapKind::STANDARD, .hasActionArguments = false});

    EXPECT_EQ(Loaded({{"outputs", {{"map", List({Item(5, "a")})}}}}), partial);

    EXPECT_EQ(lines, OutputsRejected(ZuTest::CaughtEntry(-996, "The action \"add\" has no arguments")));
    ExpectBrackets(1);
    EXPECT_EQ(Entries(), "");
}

TEST_F(PersistControlLoadTest, IgnoresOutputsAndAssembliesOfAProtocolWithoutThem)
{
    Build({});

    EXPECT_EQ(Loaded(Full()), done);

    ExpectBrackets(1);
    EXPECT_FALSE(Settings().contains("outputs"));
    EXPECT_FALSE(Settings().contains("registerAssemblyList"));
    EXPECT_TRUE(lines.empty());
}

TEST_F(PersistControlLoadTest, RefusesEntriesThatAnAdditionOfAllAtOnceHadPlacedOutOfRange)
{
    Build({.map = MapKind::REGISTER});
    Json const map = {{{"outputId", 60099}, {"outputSize", 4}, {"source", "a"}}};

    EXPECT_EQ(Loaded({{"outputs", {{"map", map}}}}), partial);

    EXPECT_EQ(lines, OutputsRejected(ZuTest::CaughtEntry(-977, "")));
    EXPECT_EQ(Entries(), "");
}

// Register assemblies

TEST_F(PersistControlLoadTest, PutsTheDefaultBlocksBackWhereBlocksAreRejected)
{
    BuildFull();
    Json const list = List({Assembly("r1", List({Block("Plain", 3)})), Assembly("r0", List({Block("Other", 10)})),
                            Assembly("r1", List({Block("Plain", 8)}))});

    EXPECT_EQ(Loaded(With(Full(), "registerAssemblyList", list)), partial);

    EXPECT_EQ(lines, Joined({{ZuTest::UserWarning("Cannot add block. The type or size of the Other block is "
                                                  "incompatible with this protocol.")},
                             BlocksRejected("r0", ZuTest::CaughtEntry(0, "No register blocks were added.")),
                             AssemblyRejected("r0", ZuTest::CaughtEntry(0, "Loading register assembly blocks"))}));
    ExpectBrackets(4);
    EXPECT_EQ(hooks.calls.Count("ConfigureDefaultRegisterAssembly"), 2u);
    EXPECT_EQ(hooks.calls.Count("RegisterAssemblyUpdate(r0)"), 0u);
    EXPECT_TRUE(instance->IsEnabled());
    EXPECT_EQ(protocol->params.port.Get(), 7);
    EXPECT_EQ(Entries(), "5 a");
    EXPECT_EQ(Blocks(0), "0 Single");
    EXPECT_EQ(Blocks(1), "0 Single"); // the defaults of all assemblies; the last element is skipped
}

TEST_F(PersistControlLoadTest, TakesTheBlocksThatFitAndNamesTheOthers)
{
    BuildFull();
    Json const blocks = List({Block("Plain", 10), Block("Plain", 11), Block("Scan", 20), Block("Single", 999)});

    EXPECT_EQ(Loaded(With(Full(), "registerAssemblyList", List({Assembly("r0", blocks)}))), done);

    EXPECT_EQ(lines, (Lines{ZuTest::UserWarning("The block output id range [11 - 12] overlaps with the output id range "
                                                "[10 - 11] of an existing block: Plain name."),
                            ZuTest::UserWarning("Cannot add block. A data source is required for block type Scan.")}));
    EXPECT_EQ(Blocks(), "10 Plain, 999 Single");
}

TEST_F(PersistControlLoadTest, EmptiesAnAssemblyForAnEmptyListAlsoOfWhatMustBeThere)
{
    BuildFull();

    EXPECT_EQ(Loaded(With(Full(), "registerAssemblyList", List({Assembly("r0", Json::array())}))), done);

    EXPECT_EQ(Blocks(0), "");
    EXPECT_EQ(Blocks(1), "0 Single");
    EXPECT_TRUE(lines.empty());
}

TEST_F(PersistControlLoadTest, RejectsBlocksThatAreNoArray)
{
    BuildFull();

    EXPECT_EQ(Loaded(With(Full(), "registerAssemblyList", List({Assembly("r0", nullptr)}))), partial);

    EXPECT_EQ(lines,
              Joined({BlocksRejected("r0", ZuTest::CaughtForeign("[json.exception.type_error.302] type must be array, "
                                                                 "but is null")),
                      AssemblyRejected("r0", ZuTest::CaughtEntry(0, "Loading register assembly blocks"))}));
    EXPECT_EQ(Blocks(), "0 Single");
}

TEST_F(PersistControlLoadTest, RejectsBlocksThatHaveNoArguments)
{
    Build({.hasActionArguments = false, .assemblies = 1});

    EXPECT_EQ(Loaded({{"registerAssemblyList", List({Assembly("r0", List({Block("Plain", 10)}))})}}), partial);

    EXPECT_EQ(lines, Joined({BlocksRejected("r0", ZuTest::CaughtEntry(-996, "The action \"add\" has no arguments")),
                             AssemblyRejected("r0", ZuTest::CaughtEntry(-996, "Loading register assembly blocks"))}));
    EXPECT_EQ(Blocks(), "0 Single");
}

TEST_F(PersistControlLoadTest, RejectsAnAssemblyThatTheProtocolRefuses)
{
    BuildFull();
    hooks.on["RegisterAssemblyUpdate(r0)"] = [] { ZU_THROW(-996); };

    EXPECT_EQ(Loaded(With(Full(), "registerAssemblyList",
                          List({Assembly("r0", List({Block("Plain", 10)})), Assembly("r1", Json::array())}))),
              partial);

    EXPECT_EQ(lines, AssemblyRejected("r0", ZuTest::CaughtEntry(-996, "")));
    EXPECT_EQ(Blocks(0), "10 Plain"); // filled before the failure
    EXPECT_EQ(Blocks(1), "0 Single");
    ExpectBrackets(3);
}

TEST_F(PersistControlLoadTest, KeepsTheStatusOfWhatRejectedBlocks)
{
    BuildFull();
    uint64 resets = 0;
    hooks.on["r0.ResetRegisterAssembly"] = [&resets] {
        if (++resets == 2)
        {
            ZU_THROW(-1000, "held");
        }
    };

    EXPECT_EQ(Loaded(Full()), partial);

    EXPECT_EQ(lines, Joined({BlocksRejected("r0", ZuTest::CaughtEntry(-1000, "held")),
                             AssemblyRejected("r0", ZuTest::CaughtEntry(-1000, "Loading register assembly blocks"))}));
}

TEST_F(PersistControlLoadTest, SaysWhatWentWrongFirstAlsoWhenTheDefaultBlocksFailToo)
{
    BuildFull();
    uint64 configured = 0;
    hooks.on["ConfigureDefaultRegisterAssembly"] = [&configured] {
        if (++configured == 2)
        {
            ZU_THROW(-5, "no defaults");
        }
    };

    EXPECT_EQ(Loaded(With(Full(), "registerAssemblyList", List({Assembly("r0", 3)}))), partial);

    auto const entry = ZuTest::CaughtForeign("[json.exception.type_error.302] type must be array, but is number");
    EXPECT_EQ(lines, Joined({{Dev("LoadRegisterAssemblyBlocks", "EXCEPTION THROWN: "),
                              ZuTest::CaughtEntry(-5, "no defaults"), ZuTest::BackTrace()},
                             BlocksRejected("r0", entry),
                             AssemblyRejected("r0", ZuTest::CaughtEntry(0, "Loading register assembly blocks"))}));
    ExpectBrackets(3);
    EXPECT_TRUE(instance->IsEnabled());
}

TEST_F(PersistControlLoadTest, WritesTheOuterLinesAloneWhenTheUpdateOfAnAssemblyCannotBegin)
{
    BuildFull();
    hooks.on["BeginUpdate"] = [] { ZU_THROW(-976, "busy"); };
    Json settings = Without(Without(Full(), "parameters"), "outputs");

    EXPECT_EQ(Loaded(settings), partial);

    EXPECT_EQ(lines, AssemblyNotLoaded("r0", ZuTest::CaughtEntry(-976, "busy")));
    EXPECT_FALSE(Called("EndUpdate"));
    EXPECT_EQ(Blocks(), "0 Single");
}

TEST_F(PersistControlLoadTest, WritesTheOuterLinesWhenTheUpdateOfAnAssemblyCannotEnd)
{
    BuildFull();
    instance->AddRegisterAssemblyUpdatedEventHandler(
        [](std::string const&, std::string const&) { throw std::runtime_error("listener"); });

    EXPECT_EQ(Loaded(Full()), partial);

    EXPECT_EQ(lines, AssemblyNotLoaded("r0", ZuTest::CaughtForeign("listener")));
    EXPECT_EQ(Blocks(), "10 Plain");
}

TEST_F(PersistControlLoadTest, TakesAnIdThatIsNoTextForAnErrorOfTheOuterLayerOnly)
{
    BuildFull();
    Json const list = List({{{"properties", {{"id", 0}}}, {"blocks", Json::array()}}, Assembly("r0", Json::array())});

    EXPECT_EQ(Loaded(With(Full(), "registerAssemblyList", list)), partial);

    EXPECT_EQ(lines, AssemblyNotLoaded("", ZuTest::CaughtForeign("[json.exception.type_error.302] type must be "
                                                                 "string, but is number")));
    EXPECT_EQ(Blocks(), "0 Single");
}

class PersistControlNoId : public PersistControlLoadTest, public testing::WithParamInterface<char const*>
{
};

TEST_P(PersistControlNoId, WarnsOfAnAssemblyWithoutAnIdAndGoesOn)
{
    BuildFull();
    Json const list = List({Json::parse(GetParam()), Assembly("r0", Json::array())});

    EXPECT_EQ(Loaded(With(Full(), "registerAssemblyList", list)), done);

    EXPECT_EQ(lines, (Lines{DevWarning("LoadRegisterAssemblyEntry", "Missing connection map identifier for service x"),
                            ZuTest::UserWarning("Missing connection map identifier for service x. Connection map may "
                                                "require manual configuration.")}));
    EXPECT_EQ(Blocks(), "");
}

INSTANTIATE_TEST_SUITE_P(Every, PersistControlNoId,
                         testing::Values(R"({"blocks":[]})", R"({"blocks":[],"properties":{}})",
                                         R"({"blocks":[],"properties":["id"]})", R"({"blocks":7,"properties":null})",
                                         R"({"blocks":[],"properties":{"id":""}})"));

TEST_F(PersistControlLoadTest, WarnsOfAnAssemblyThatTheProtocolDoesNotHaveAndGoesOn)
{
    BuildFull();
    Json const list = List({Assembly("r%s", Json::array()), Assembly("r0", Json::array())});

    EXPECT_EQ(Loaded(With(Full(), "registerAssemblyList", list)), done);

    EXPECT_EQ(lines,
              (Lines{DevWarning("LoadRegisterAssemblyEntry", "Missing connection map identifier r%s for service x"),
                     ZuTest::UserWarning("Missing connection map identifier r%s for service x. Connection map may "
                                         "require manual configuration.")}));
    EXPECT_EQ(Blocks(), "");
}

TEST_F(PersistControlLoadTest, TakesAnIdThatGoesOnBehindANulForAnotherOne)
{
    BuildFull();
    Json const list = List({Assembly(std::string("r0\0x", 4), Json::array())});

    EXPECT_EQ(Loaded(With(Full(), "registerAssemblyList", list)), done);

    EXPECT_EQ(
        lines,
        (Lines{DevWarning("LoadRegisterAssemblyEntry", "Missing connection map identifier r0\\u0000x for service x"),
               ZuTest::UserWarning("Missing connection map identifier r0\\u0000x for service x. Connection map may "
                                   "require manual configuration.")}));
    EXPECT_EQ(Blocks(), "0 Single") << "the blocks of r0 are the default ones";
}

class PersistControlNoBlocks : public PersistControlLoadTest, public testing::WithParamInterface<char const*>
{
};

TEST_P(PersistControlNoBlocks, PassesOverAnElementWithoutBlocks)
{
    BuildFull();
    Json const list = List({Json::parse(GetParam()), Assembly("r0", Json::array())});

    EXPECT_EQ(Loaded(With(Full(), "registerAssemblyList", list)), done);

    EXPECT_EQ(Blocks(), "");
    ExpectBrackets(3);
    EXPECT_TRUE(lines.empty());
}

INSTANTIATE_TEST_SUITE_P(Every, PersistControlNoBlocks,
                         testing::Values("null", "3", "[]", R"(["blocks"])", R"("blocks")", "{}",
                                         R"({"properties":{"id":"r0"}})", R"({"properties":{"id":7}})",
                                         R"({"properties":3})"));

class PersistControlNoList : public PersistControlLoadTest, public testing::WithParamInterface<char const*>
{
};

TEST_P(PersistControlNoList, PassesOverAListOfAssembliesThatIsNone)
{
    BuildFull();

    EXPECT_EQ(Loaded(With(Full(), "registerAssemblyList", Json::parse(GetParam()))), done);

    EXPECT_EQ(Blocks(), "0 Single");
    ExpectBrackets(2);
    EXPECT_TRUE(lines.empty());
}

INSTANTIATE_TEST_SUITE_P(Every, PersistControlNoList, testing::Values("null", "{}", "3", R"("r0")", "[]"));

// Enabled state

TEST_F(PersistControlLoadTest, PassesOnWhatTheStartThrows)
{
    BuildFull();
    hooks.on["Start"] = [] { ZU_THROW(-998, "port taken"); };

    EXPECT_EQ(Loaded(Full()), (Refusal{-998, "port taken"}));

    EXPECT_FALSE(instance->IsEnabled());
    EXPECT_EQ(protocol->params.port.Get(), 7);
    EXPECT_EQ(Entries(), "5 a");
    EXPECT_EQ(Blocks(), "10 Plain");
    EXPECT_TRUE(lines.empty());
}

TEST_F(PersistControlLoadTest, PassesOnWhatTheStartThrowsAlsoBehindAFailure)
{
    BuildFull();
    hooks.on["Start"] = [] { ZU_THROW(-998, "port taken"); };

    EXPECT_EQ(Loaded(With(Full(), "parameters", 3)), (Refusal{-998, "port taken"}));

    EXPECT_EQ(lines, ParamsRejected(
                         ZuTest::CaughtForeign("[json.exception.type_error.302] type must be object, but is number")));
}

TEST_F(PersistControlLoadTest, StopsAServiceThatIsToBeOffBehindAllItsSettings)
{
    BuildFull();
    instance->Enable(true);

    EXPECT_EQ(Loaded(With(Full(), "enabled", false)), done);

    EXPECT_EQ(made.back(), "Stop");
    EXPECT_FALSE(instance->IsEnabled());
    EXPECT_EQ(Entries(), "5 a");
}

TEST_F(PersistControlLoadTest, KeepsToTheParametersOfAProtocolThatSavesNothingElse)
{
    Build({.number = 6, .map = MapKind::STANDARD, .assemblies = 1});
    Loaded(Full());
    auto args = instance->OutputsActionTarget().GetActionParams("add");
    Zu::Properties::JsonSerializer::Deserialize(*args, Item(5, "kept"));
    instance->OutputsActionTarget().InvokeAction("add", *args);

    EXPECT_EQ(Loaded(With(Full(), "parameters", {{"name", "new"}})), done);

    EXPECT_EQ(made, (Calls{"ResetParams", "BeginUpdate", "Params", "ParamsUpdate", "EndUpdate"}));
    EXPECT_EQ(protocol->map->DataSourceList(), (std::vector<std::string>{"kept"}));
    EXPECT_EQ(Settings(), Json({{"enabled", true},
                                {"parametersVersion", "1"},
                                {"parameters",
                                 {{"port", 1000},
                                  {"name", "new"},
                                  {"secure", false},
                                  {"mask", 0},
                                  {"limits", {{"low", -5}, {"high", 0.5}}}}}}));
    EXPECT_TRUE(lines.empty());
}

} // namespace ZuControl
