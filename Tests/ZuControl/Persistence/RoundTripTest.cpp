#include "Support/FakeHost.h"
#include "Support/FakePersistStore.h"
#include "Support/FakePlugin.h"
#include "Support/FakeScanResults.h"
#include "Support/FakeUpdateGate.h"
#include "Support/Refusal.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuCommon/Problems.h"
#include "ZuControl/Control/ControlManager.h"
#include "ZuControl/Control/ControlRegistry.h"
#include "ZuControl/Control/IControlActionTarget.h"
#include "ZuControl/Control/IControlInstance.h"
#include "ZuControl/Persistence/ConfigurableProtocol.h"
#include "ZuControl/Persistence/PersistControl.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace ZuControl
{

using ZuCommon::PersistDomain;
using ZuTest::RefusalOf;

namespace
{

using Json = nlohmann::json;
using Zu::Properties::JsonSerializer;

constexpr unsigned ROUNDS = 20;
constexpr unsigned PROTOCOLS = 50; // in a module; each round tests as many configurations

std::string NameOf(unsigned number)
{
    return (number < 10 ? "p0" : "p") + std::to_string(number);
}

std::string PathOf(std::string const& name)
{
    return "/controls/" + name + "/config.json";
}

ProtocolParts PartsOf(unsigned number)
{
    constexpr MapKind KINDS[] = {MapKind::REGISTER, MapKind::STANDARD, MapKind::TEXT_ID, MapKind::NONE};
    return {.number = number == 7 ? 6 : static_cast<int32>(100 + number), // protocol 6 saves only its parameters
            .map = KINDS[number % 4],
            .assemblies = number % 3};
}

/// Executes an action as a client does. Returns whether it succeeded.
bool Act(IControlActionTarget& target, char const* action, Json const& arguments)
{
    auto const args = target.GetActionParams(action);
    JsonSerializer::Deserialize(*args, arguments);
    return RefusalOf([&] { target.InvokeAction(action, *args); }).status == Zu::Status::SUCCESS;
}

/// A module with many protocols, a store for its job, and a host that counts the marks of the job as modified.
class Module
{
public:
    Module()
    {
        auto const plugin = std::make_shared<ZuTest::FakePlugin>();
        for (unsigned i = 0; i < PROTOCOLS; ++i)
        {
            plugin->Offer(NameOf(i).c_str(), [this, i](ControlProtocol::ControlProtocolEnviron const& given) {
                return std::make_shared<ConfigurableProtocol>(given, hooks, PartsOf(i));
            });
        }
        ZuTest::AddLib(plugins, {plugin});
        environ.deployment = &deployment;
        environ.problems = &problems;
        environ.updateGate = &gate;
        environ.persistRegistry = &persistRegistry;
        registry = std::make_unique<ControlRegistry>(plugins);
        manager = std::make_unique<ControlManager>(*registry, scanResults, environ);
        manager->InitPersistDomain(PersistDomain::JOB, store);
        calls.Clear();
    }

    IControlInstance& Instance(unsigned number)
    {
        return manager->GetInstance(NameOf(number));
    }

    void Save()
    {
        manager->SavePersistDomain(PersistDomain::JOB, store);
    }

    void Load()
    {
        calls.Clear();
        manager->LoadPersistDomain(PersistDomain::JOB, store);
        marks = calls.Count("MarkModified(2)");
    }

    Json Document(unsigned number)
    {
        return Json::parse(store.files.at(PathOf(NameOf(number))));
    }

    ZuTest::FakePersistStore store;
    std::size_t marks = 0; ///< of the job, by the last load

private:
    Hooks hooks;
    ZuTest::CallLog calls;
    ZuTest::FakeDeployment deployment;
    ZuTest::FakeUpdateGate gate{calls};
    ZuTest::FakePersistRegistry persistRegistry{calls};
    ZuTest::FakeScanResults scanResults{calls};
    ZuCommon::ProblemsManager problems;
    ZuPlugin::PluginManager plugins;
    ControlModuleEnviron environ;
    std::unique_ptr<ControlRegistry> registry;
    std::unique_ptr<ControlManager> manager;
};

/// Changes instances at random, as clients do.
class RandomClient
{
public:
    explicit RandomClient(uint32 seed) : generator(seed)
    {
    }

    void Configure(IControlInstance& instance)
    {
        ChangeParameters(instance);
        if (instance.HasProtocolOutput())
        {
            ChangeOutputs(instance.OutputsActionTarget());
        }
        if (instance.HasRegisterAssemblyGroup())
        {
            for (std::string const& id : instance.RegisterAssemblyList())
            {
                ChangeBlocks(instance.RegisterAssemblyActionTarget(id.c_str()));
            }
        }
        instance.Enable(Chance(2));
    }

private:
    uint32 Below(uint32 limit)
    {
        return static_cast<uint32>(generator() % limit);
    }

    bool Chance(uint32 oneIn)
    {
        return Below(oneIn) == 0;
    }

    std::string Text()
    {
        constexpr char const* PIECES[] = {
            "a", "Z", "\"", "\\", "/", "\n", "\x01", "\x7f", "\xc3\xa4", "\xe2\x82\xac", "\xf0\x9f\x98\x80", " ", "%s"};
        std::string text;
        for (uint32 i = Below(12); i > 0; --i)
        {
            text += PIECES[Below(std::size(PIECES))];
        }
        return text;
    }

    std::string Source()
    {
        return "s" + std::to_string(Below(60));
    }

    void ChangeParameters(IControlInstance& instance)
    {
        Json const changes = {
            {"port", Below(65536)},
            {"name", Text()},
            {"secure", Chance(2)},
            {"mask", generator()},
            {"limits",
             {{"low", static_cast<int32>(generator())},
              {"high", std::ldexp(static_cast<double>(generator()), static_cast<int>(Below(200)) - 150)}}}};
        JsonSerializer::Deserialize(instance.BeginUpdateParameters(), changes);
        instance.ParamsUpdate();
        instance.EndUpdateParameters();
    }

    /// Ids near each other, and sometimes at the end of the range.
    Json OutputId(bool isText)
    {
        if (isText)
        {
            return Text() + std::to_string(Below(40));
        }
        return Chance(20) ? 65500 + Below(36) : 100 + Below(300);
    }

    Json Output(bool isText)
    {
        return {{"outputId", OutputId(isText)}, {"outputSize", 1 + Below(12)}, {"source", Source()},
                {"dataOffset", Below(9)},       {"dataLength", Below(9)},      {"autoShift", Chance(4)}};
    }

    void ChangeOutputs(IControlActionTarget& target)
    {
        auto const item = target.GetActionParams("add");
        bool const isText = JsonSerializer::Serialize(*item).at("outputId").is_string();
        for (uint32 i = Below(30); i > 0; --i)
        {
            switch (Below(12))
            {
            case 0:
                Act(target, "remove", {{"outputId", OutputId(isText)}});
                break;
            case 1:
                Act(target, "compactId", Json::object());
                break;
            case 2:
                Act(target, "addAll", {{"map", Json::array({Output(isText), Output(isText)})}});
                break;
            case 3:
                Act(target, "updateId", {{"map", Json::array({Output(isText), Output(isText)})}, {"autoShift", true}});
                break;
            default:
                Act(target, "add", Output(isText));
                break;
            }
        }
    }

    Json Block()
    {
        constexpr char const* TYPES[] = {"Plain", "Scan", "Single", "Other"};
        Json block = {{"type", TYPES[Below(std::size(TYPES))]}, {"scannerId", Text()}, {"dataSource", Source()}};
        if (Chance(2))
        {
            block["displayName"] = Text();
        }
        if (!Chance(4))
        {
            block["outputId"] = Chance(15) ? 65534 : Below(120);
        }
        return block;
    }

    void ChangeBlocks(IControlActionTarget& target)
    {
        for (uint32 i = Below(20); i > 0; --i)
        {
            switch (Below(8))
            {
            case 0:
                Act(target, "remove", {{"outputIdList", Json::array({{{"outputId", Below(120)}}})}});
                break;
            case 1:
                Act(target, "compact", {{"startingOutputId", Below(200)}});
                break;
            case 2:
            case 3:
                Act(target, "update", {{"outputId", Below(120)}, {"newParams", Block()}, {"autoShift", Chance(2)}});
                break;
            default:
                Act(target, "add", {{"blocks", Json::array({Block(), Block()})}, {"autoShift", Chance(2)}});
                break;
            }
        }
    }

    std::mt19937_64 generator;
};

/// Computes the expected result of a load of `settings`: the entries and blocks that "add" accepts in the order of the
/// file. A separate module adds them one by one.
class Replay
{
public:
    /// The expected settings. Sets `rejected` if the map refuses an output; the load ends at that output.
    Json Expected(Json const& settings, unsigned number)
    {
        IControlInstance& instance = module.Instance(number);
        instance.ResetInstance(false, IControlInstance::DataToResetAll);
        rejected = false;
        if (settings.contains("outputs"))
        {
            AddOutputs(instance.OutputsActionTarget(), settings.at("outputs").at("map"));
        }
        if (settings.contains("registerAssemblyList") && !rejected)
        {
            for (Json const& assembly : settings.at("registerAssemblyList"))
            {
                AddBlocks(instance, assembly);
            }
        }
        ZuTest::FakePersistStore store;
        PersistControl().Save(instance, PersistDomain::JOB, store);
        Json expected = Json::parse(store.files.at(PathOf(NameOf(number)))).at("zu:control");
        expected["enabled"] = settings.at("enabled");
        expected["parameters"] = settings.at("parameters");
        return expected;
    }

    bool rejected = false;

private:
    void AddOutputs(IControlActionTarget& target, Json const& map)
    {
        for (Json const& entry : map)
        {
            if (!Act(target, "add", entry))
            {
                rejected = true;
                return;
            }
        }
    }

    void AddBlocks(IControlInstance& instance, Json const& assembly)
    {
        auto const id = assembly.at("properties").at("id").get<std::string>();
        instance.RegisterAssembly(id.c_str()).ResetRegisterAssembly();
        IControlActionTarget& target = instance.RegisterAssemblyActionTarget(id.c_str());
        for (Json const& block : assembly.at("blocks"))
        {
            Act(target, "add", {{"blocks", Json::array({block})}});
        }
    }

    Module module;
};

} // namespace

TEST(RoundTrip, BringsAThousandRandomConfigurationsBackIntoAFreshModule)
{
    uint32 const seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    RecordProperty("seed", std::to_string(seed));
    RandomClient client(seed);
    Replay replay;
    unsigned identical = 0;
    unsigned rejected = 0;

    for (unsigned round = 0; round < ROUNDS; ++round)
    {
        Module saved;
        for (unsigned i = 0; i < PROTOCOLS; ++i)
        {
            client.Configure(saved.Instance(i));
        }
        saved.Save();
        Module loaded;
        loaded.store.files = saved.store.files;
        loaded.Load();
        loaded.Save();

        bool failed = false;
        for (unsigned i = 0; i < PROTOCOLS; ++i)
        {
            Json const before = saved.Document(i);
            Json expected = before;
            expected["zu:control"] = replay.Expected(before.at("zu:control"), i);
            ASSERT_EQ(loaded.Document(i), expected) << "protocol " << i << " of round " << round;
            ASSERT_EQ(loaded.Instance(i).IsEnabled(), before.at("zu:control").at("enabled"));
            identical += expected == before ? 1 : 0;
            rejected += replay.rejected ? 1 : 0;
            failed |= replay.rejected;
        }
        EXPECT_EQ(loaded.marks, failed ? 1u : 0u);
    }

    RecordProperty("identical", static_cast<int>(identical));
    RecordProperty("rejected", static_cast<int>(rejected));
    EXPECT_GT(identical, ROUNDS * PROTOCOLS / 2) << "the configurations are mostly such as load differently";
    EXPECT_GT(rejected, 0u) << "no configuration is one that cannot be loaded back";
}

} // namespace ZuControl
