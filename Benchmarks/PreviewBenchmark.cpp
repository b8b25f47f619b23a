/// A change of 10,000 entries, and the preview of the same change, both as requests of a client.
///
/// The preview gives the tag of the state that it was made from, and the client sends that tag with the change. So the
/// change is measured with `If-Match`: both requests make the document whose tag they need. `Preview/.../Unconditional`
/// is the change without a tag, for comparison.

#include "ConfiguredInstance.h"

#include "ZuControl/Control/IControlManager.h"
#include "ZuControl/Protocol/ControlOutputsResource.h"
#include "ZuControl/Protocol/ControlPlcResources.h"
#include "ZuControl/Protocol/ControlRegisterAssemblyResource.h"
#include "ZuRest/Answer.h"
#include "ZuRest/Request.h"
#include "ZuRest/ResourceRequestProcessor.h"
#include "ZuRest/ResourceRouter.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>

namespace
{

using ZuBench::ConfiguredInstance;
using ZuBench::EntryKind;
using Json = nlohmann::json;

constexpr unsigned ENTRIES = 10'000;

/// The manager of one instance.
class OneManager final : public ZuControl::IControlManager
{
public:
    explicit OneManager(ZuControl::IControlInstance& onlyInstance) : instance(onlyInstance)
    {
    }

    std::string Component() override
    {
        return "benchmark";
    }

    void InitPersistDomain(ZuCommon::PersistDomain /*domain*/, ZuCommon::IPersistStore& /*store*/) override
    {
    }

    void LoadPersistDomain(ZuCommon::PersistDomain /*domain*/, ZuCommon::IPersistStore const& /*store*/) override
    {
    }

    void SavePersistDomain(ZuCommon::PersistDomain /*domain*/, ZuCommon::IPersistStore& /*store*/) override
    {
    }

    std::vector<std::string> List() const override
    {
        return {instance.TypeName()};
    }

    ZuControl::IControlInstance& GetInstance(std::string const& /*typeName*/) override
    {
        return instance;
    }

    CallbackId AddPersistenceLoadEventHandler(std::function<void(PersistenceLoadOpState)> /*handler*/) override
    {
        return {};
    }

    void RemovePersistenceLoadEventHandler(CallbackId /*id*/) override
    {
    }

private:
    ZuControl::IControlInstance& instance;
};

/// A service with entries behind the resources of its map or its assembly.
class Service final
{
public:
    explicit Service(EntryKind newKind) : kind(newKind), configured(newKind)
    {
        router.Register("/controls/:protocol/outputs", outputs);
        router.Register("/controls/:protocol/outputs/commands/:command", outputsAction);
        router.Register("/controls/:protocol/outputs/preview", outputsPreview);
        router.Register("/controls/:protocol/registerAssemblies/:registerAssembly", assembly);
        router.Register("/controls/:protocol/registerAssemblies/:registerAssembly/commands/:command", assemblyAction);
        router.Register("/controls/:protocol/registerAssemblies/:registerAssembly/preview", assemblyPreview);
    }

    ~Service()
    {
        router.Deregister("/controls", true);
    }

    Service(Service const&) = delete;
    Service& operator=(Service const&) = delete;

    void Change(char const* command, Json const& arguments)
    {
        Post(Subject() + "/commands/" + command, arguments.dump());
    }

    /// The tag of the map or the assembly.
    std::string Tag()
    {
        ZuRest::Request request;
        request.method = "GET";
        request.path = Subject();
        for (auto const& [name, value] : processor.Process(request).answer.headers)
        {
            if (name == "ETag")
            {
                return value;
            }
        }
        throw std::runtime_error("the document has no tag");
    }

    /// The body is made by the caller: a client does that too.
    std::string Post(std::string const& path, std::string const& body, std::string const& tag = "")
    {
        ZuRest::Request request;
        request.method = "POST";
        request.path = path;
        request.body = body;
        request.ifMatch = tag;
        ZuRest::Answer answer = processor.Process(request).answer;
        if (answer.status >= 300)
        {
            throw std::runtime_error(answer.body);
        }
        return std::move(answer.body);
    }

    std::string Subject() const
    {
        return kind == EntryKind::BLOCKS ? "/controls/Benchmark/registerAssemblies/registerAssembly-0"
                                         : "/controls/Benchmark/outputs";
    }

    /// Adds the entries in commands whose bodies a request can hold.
    void Fill()
    {
        constexpr unsigned PART = 2'000;
        for (unsigned first = 0; first < ENTRIES; first += PART)
        {
            Json list = Json::array();
            for (unsigned i = first; i < first + PART; ++i)
            {
                list.push_back(Entry(i));
            }
            kind == EntryKind::BLOCKS ? Change("add", {{"blocks", list}}) : Change("addAll", {{"map", list}});
        }
        if (configured.Count() != ENTRIES)
        {
            throw std::runtime_error("entries are missing");
        }
    }

    Json Entry(unsigned number) const
    {
        std::string const source = "profile/measurement" + std::to_string(number);
        if (kind == EntryKind::BLOCKS)
        {
            return {{"type", "Measurement"}, {"dataSource", source}};
        }
        Json entry{{"source", source}};
        if (kind == EntryKind::REGISTER_MAP)
        {
            entry["outputSize"] = 4;
        }
        return entry;
    }

private:
    EntryKind const kind;
    ConfiguredInstance configured;
    OneManager manager{configured.Instance()};
    ZuControl::Protocol::ControlOutputsResource outputs{manager};
    ZuControl::Protocol::ControlOutputsActionResource outputsAction{manager};
    ZuControl::Protocol::ControlOutputsPreviewResource outputsPreview{manager};
    ZuControl::Protocol::ControlRegisterAssemblyResource assembly{manager};
    ZuControl::Protocol::ControlRegisterAssemblyActionResource assemblyAction{manager};
    ZuControl::Protocol::ControlRegisterAssemblyPreviewResource assemblyPreview{manager};
    ZuRest::ResourceRouter router;
    ZuRest::ResourceRequestProcessor processor{router};
};

/// A command that moves every entry, and the untimed commands after which it does so again.
struct Move
{
    char const* command;
    Json arguments;
};

Move MoveOf(EntryKind kind, bool isBack)
{
    if (kind == EntryKind::BLOCKS)
    {
        return {"compact", {{"startingOutputId", isBack ? 0 : 1}}};
    }
    return {"compactId", Json::object()};
}

/// Takes the first item of a map out and puts it back at the end, so that a compaction moves all others.
void OpenGap(Service& service, EntryKind kind)
{
    if (kind == EntryKind::BLOCKS)
    {
        return;
    }
    service.Change("remove", {{"outputId", 0}});
}

void Refill(Service& service, EntryKind kind, unsigned number)
{
    if (kind != EntryKind::BLOCKS)
    {
        service.Change("addAll", {{"map", {service.Entry(number)}}});
    }
}

template <EntryKind KIND, bool HAS_TAG = true>
void BM_MoveAll(benchmark::State& state)
{
    Service service(KIND);
    service.Fill();
    bool isBack = false;
    unsigned number = ENTRIES;
    for (auto _ : state)
    {
        state.PauseTiming();
        OpenGap(service, KIND);
        Move const move = MoveOf(KIND, isBack);
        std::string const path = service.Subject() + "/commands/" + move.command;
        std::string const body = move.arguments.dump();
        std::string const tag = HAS_TAG ? service.Tag() : "";
        state.ResumeTiming();

        service.Post(path, body, tag);

        state.PauseTiming();
        Refill(service, KIND, number++);
        isBack = !isBack;
        state.ResumeTiming();
    }
}

template <EntryKind KIND>
void BM_PreviewMoveAll(benchmark::State& state)
{
    Service service(KIND);
    service.Fill();
    OpenGap(service, KIND);
    Move const move = MoveOf(KIND, false);
    std::string const path = service.Subject() + "/preview";
    std::string const body = Json{{"command", move.command}, {"arguments", move.arguments}}.dump();
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(service.Post(path, body).size());
    }
}

} // namespace

BENCHMARK(BM_MoveAll<EntryKind::BLOCKS>)->Name("Preview/Blocks/Change")->Unit(benchmark::kNanosecond);
BENCHMARK(BM_PreviewMoveAll<EntryKind::BLOCKS>)->Name("Preview/Blocks/Preview")->Unit(benchmark::kNanosecond);
BENCHMARK(BM_MoveAll<EntryKind::BLOCKS, false>)->Name("Preview/Blocks/Unconditional")->Unit(benchmark::kNanosecond);
BENCHMARK(BM_MoveAll<EntryKind::STANDARD_MAP>)->Name("Preview/StandardMap/Change")->Unit(benchmark::kNanosecond);
BENCHMARK(BM_PreviewMoveAll<EntryKind::STANDARD_MAP>)
    ->Name("Preview/StandardMap/Preview")
    ->Unit(benchmark::kNanosecond);
BENCHMARK(BM_MoveAll<EntryKind::REGISTER_MAP>)->Name("Preview/RegisterMap/Change")->Unit(benchmark::kNanosecond);
BENCHMARK(BM_PreviewMoveAll<EntryKind::REGISTER_MAP>)
    ->Name("Preview/RegisterMap/Preview")
    ->Unit(benchmark::kNanosecond);
