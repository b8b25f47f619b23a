#include "Host/Operation/SensorResources.h"

#include "Host/Module/SensorModule.h"
#include "Host/Operation/SensorFigures.h"
#include "Host/Operation/SensorParams.h"
#include "Host/Operation/SensorSettings.h"
#include "Host/Sensor/Aligner.h"
#include "ZuApi/Exception.h"
#include "ZuApi/Guard.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuCommon/Persistence.h"
#include "ZuControl/Control/IControlInstance.h"
#include "ZuControl/Control/IControlManager.h"
#include "ZuRest/Answer.h"
#include "ZuRest/IDocumentResource.h"
#include "ZuRest/IResource.h"
#include "ZuRest/JsonText.h"
#include "ZuRest/Path.h"
#include "ZuRest/Request.h"
#include "ZuRest/RequestInfo.h"
#include "ZuRest/ResourceRouter.h"
#include "ZuRest/ResponseInfo.h"
#include "ZuScan/ScanEngines.h"
#include "ZuScan/Sensor.h"
#include "wApi/wTime.h"

#include <charconv>

namespace ZuHost
{

namespace HttpStatus = ZuRest::HttpStatus;
using Json = nlohmann::json;
using Argument = SensorCommands::Argument;
using Zu::Properties::JsonSerializer;
using ZuRest::Answer;

namespace
{

constexpr char const* SENSOR_ROUTE = "/sensor";
constexpr char const* COMMAND_ROUTE = "/sensor/commands/:command";
constexpr char const* AUTHORITY_ROUTE = "/sensor/authority";
constexpr char const* LIMITS_ROUTE = "/sensor/limits";
constexpr char const* OPERATION_ROUTE = "/operations/:number";

double SecondsIn(uint64 usec)
{
    constexpr double USEC_A_SECOND = 1e6;
    return static_cast<double>(usec) / USEC_A_SECOND;
}

uint64 UsecSince(uint64 usec)
{
    uint64 const now = wTime_NowUsec();
    return now > usec ? now - usec : 0;
}

char const* TextFor(ZuCore::RunState state)
{
    switch (state)
    {
    case ZuCore::RunState::READY:
        return "ready";
    case ZuCore::RunState::RUNNING:
        return "running";
    default:
        return "error";
    }
}

char const* TextFor(RestAuthority rest)
{
    switch (rest)
    {
    case RestAuthority::ALWAYS:
        return "always";
    case RestAuthority::WHEN_IDLE:
        return "whenIdle";
    default:
        return "never";
    }
}

char const* TextFor(OperationLog::Result result)
{
    switch (result)
    {
    case OperationLog::Result::RUNNING:
        return "running";
    case OperationLog::Result::DONE:
        return "done";
    default:
        return "failed";
    }
}

std::string HolderOf(ControlAuthority::State const& state)
{
    if (state.settings.rest == RestAuthority::NEVER)
    {
        return "protocols";
    }
    return state.mayCommand ? "everybody" : state.lastProtocol;
}

Json AuthorityJson(ControlAuthority::State const& state)
{
    bool const isNever = state.settings.rest == RestAuthority::NEVER;
    Json lastCommand;
    if (!state.lastProtocol.empty())
    {
        lastCommand = {{"protocol", state.lastProtocol}, {"secondsAgo", SecondsIn(state.agoUsec)}};
    }
    return {{"rest", TextFor(state.settings.rest)},
            {"holder", HolderOf(state)},
            {"mayCommand", state.mayCommand},
            {"waitSeconds", isNever ? Json() : Json(SecondsIn(state.waitUsec))},
            {"lastCommand", std::move(lastCommand)}};
}

Json InputsOf(SensorFigures const& figures)
{
    Json list = Json::array();
    for (auto const& input : figures.digitalInputs)
    {
        list.push_back({{"index", list.size()}, {"enabled", input.isEnabled}, {"high", input.isHigh}});
    }
    return list;
}

Json OutputsOf(SensorFigures const& figures)
{
    Json digital = Json::array();
    for (auto const& output : figures.digitalOutputs)
    {
        digital.push_back({{"index", digital.size()},
                           {"enabled", output.isEnabled},
                           {"high", output.isHigh},
                           {"pulses", output.pulses},
                           {"pulseAgeSec", output.pulses > 0 ? Json(output.pulseAgeSec) : Json()}});
    }
    Json analog = Json::array();
    for (auto const& output : figures.analogOutputs)
    {
        analog.push_back(
            {{"index", analog.size()}, {"enabled", output.isEnabled}, {"milliamperes", output.milliamperes}});
    }
    Json serial = Json::array();
    for (auto const& output : figures.serialOutputs)
    {
        serial.push_back(
            {{"index", serial.size()}, {"enabled", output.isEnabled}, {"bytes", output.bytes}, {"last", output.last}});
    }
    return {{"digital", std::move(digital)}, {"analog", std::move(analog)}, {"serial", std::move(serial)}};
}

/// The results that the clients of a protocol have lost; null if its record does not tell.
Json DropsOf(ZuRest::ResourceRouter const& router, std::string const& typeName)
{
    std::string const path = ZuRest::Path::Format("/controls/:protocol/metrics", {typeName});
    Json drops;
    ZU_GUARD_BOUNDARY([&] {
        if (auto const match = router.Find(path); match.has_value() && match->resource->DocumentProvider() != nullptr)
        {
            ZuRest::ResponseInfo response;
            drops = match->resource->DocumentProvider()
                        ->Document({path, match->keys, false}, response)
                        .value("controlDrops", Json());
        }
    });
    return drops;
}

/// The document of a command.
class CommandDocument final : public Zu::Properties::Structure
{
public:
    explicit CommandDocument(SensorCommands::Command const& command) : Structure(true)
    {
        id.Set(command.id);
        Register("id", id);
        if (command.argument != Argument::NONE)
        {
            bool const isJob = command.argument == Argument::JOB;
            parameters.Register(isJob ? "job" : "scanner", isJob ? "Job" : "Scanner", argument);
        }
        Register("parameters", parameters);
    }

    ~CommandDocument() override
    {
        parameters.Deregister("job"); // before the members, to which the base classes refer, are destroyed
        parameters.Deregister("scanner");
        Deregister("id");
        Deregister("parameters");
    }

    CommandDocument(CommandDocument const&) = delete;
    CommandDocument& operator=(CommandDocument const&) = delete;

private:
    Zu::Properties::Value<std::string> id;
    Zu::Params::Value<std::string> argument;
    Zu::Params::Group parameters;
};

/// The argument of the command in the body of a request. Throws `Zu::Status::BAD_ARGUMENT` for another body.
std::string ArgumentIn(SensorCommands::Command const& command, std::string const& text)
{
    Json body = text.empty() ? Json::object() : ZuRest::JsonText::Read(text);
    if (body.is_object() && body.size() == 1 && body.contains("parameters"))
    {
        body = Json(body.at("parameters"));
    }
    if (!body.is_object())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "The parameters of a command are an object.");
    }
    std::string argument;
    for (auto const& [key, value] : body.items())
    {
        bool const isKnown = (key == "scanner" && command.argument == Argument::SCANNER) ||
                             (key == "job" && command.argument == Argument::JOB);
        if (!isKnown)
        {
            ZU_THROW(Zu::Status::BAD_ARGUMENT, "The command '%s' has no parameter '%s'.", command.id, key.c_str());
        }
        if (!value.is_string())
        {
            ZU_THROW(Zu::Status::BAD_ARGUMENT, "The parameter '%s' is a text.", key.c_str());
        }
        argument = value;
    }
    return argument;
}

} // namespace

SensorResource::SensorResource(SensorModule& usedModule, ZuCommon::PersistManager& usedJobs,
                               SensorCommands& usedCommands)
    : module(usedModule), jobs(usedJobs), commands(usedCommands)
{
}

SensorResource::~SensorResource() = default;

Json SensorResource::Document(ZuRest::RequestInfo const& /*request*/, ZuRest::ResponseInfo& response)
{
    SensorFigures const figures = SensorFigures::Of(module);
    std::string const scanner = commands.FirstScanner();
    Json const metrics = JsonSerializer::Serialize(module.Core().GetMetricsReporter().LastReport().GetMetrics());
    for (SensorCommands::Command const& command : SensorCommands::COMMANDS)
    {
        response.Link("zu:command", ZuRest::Path::Format(COMMAND_ROUTE, {command.id}), true, nullptr);
    }
    response.Link("zu:controlAuthority", AUTHORITY_ROUTE, false, nullptr);
    response.Link("zu:limits", LIMITS_ROUTE, false, nullptr);
    response.Link("zu:operations", "/operations", false, nullptr);
    return {{"state", TextFor(figures.state)},
            {"job", jobs.LoadedJob()},
            {"scanner", scanner},
            {"alignment", Alignment(scanner)},
            {"upTimeSec", metrics.value("upTime", Json())},
            {"profiles",
             {{"setRateHz", figures.setRateHz},
              {"rateHz", figures.rateHz},
              {"taken", figures.taken},
              {"missed", figures.missed}}},
            {"results", Results(figures.droppedSets)},
            {"operation", OperationInFlight()},
            {"authority", AuthorityJson(commands.Authority())},
            {"outputs", OutputsOf(figures)},
            {"inputs", InputsOf(figures)}};
}

Json SensorResource::Alignment(std::string const& scanner) const
{
    for (std::string const& engine : module.ScanEngines().List())
    {
        auto const& instance = module.ScanEngines().GetInstance(engine);
        if (!instance.ListScanners().empty())
        {
            return TextFor(instance.FindScanner(scanner).Scanner().GetAlignState());
        }
    }
    return {};
}

Json SensorResource::Results(uint64 droppedSets) const
{
    ZuControl::ControlStatistics const statistics = module.Module().Statistics();
    Json protocols = Json::array();
    for (auto const& protocol : statistics.protocols)
    {
        protocols.push_back({{"id", protocol.typeName},
                             {"enabled", module.Controls().GetInstance(protocol.typeName).IsEnabled()},
                             {"sets", protocol.resultSets},
                             {"dropped", DropsOf(module.Router(), protocol.typeName)}});
    }
    return {{"sets", statistics.resultSets}, {"dropped", droppedSets}, {"protocols", std::move(protocols)}};
}

Json SensorResource::OperationInFlight() const
{
    ZuControl::ControlVitals::Operation const operation = module.Module().Vitals().operation;
    if (operation.sinceUsec == 0)
    {
        return {};
    }
    return {{"what", operation.name},
            {"protocol", operation.isOfHost ? Json() : Json(operation.typeName)},
            {"seconds", SecondsIn(UsecSince(operation.sinceUsec))}};
}

SensorCommandResource::SensorCommandResource(SensorCommands& usedCommands) : commands(usedCommands)
{
}

SensorCommandResource::~SensorCommandResource() = default;

Json SensorCommandResource::Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response)
{
    if (std::string const* const id = request.FindKey("command"); id != nullptr)
    {
        return NodeToJson(CommandDocument(SensorCommands::Find(*id)), request);
    }
    for (SensorCommands::Command const& command : SensorCommands::COMMANDS)
    {
        response.Embed("item", ZuRest::Path::Format(COMMAND_ROUTE, {command.id}), true, nullptr);
    }
    return Json::object();
}

std::vector<std::string> SensorCommandResource::ContentMethods() const
{
    return {"POST"};
}

Answer SensorCommandResource::AnswerContent(ZuRest::Request const& request, ZuRest::RequestInfo const& info)
{
    std::string const* const id = info.FindKey("command");
    if (id == nullptr)
    {
        ZU_THROW(Zu::Status::NOT_UPDATABLE, "The list of commands is no command.");
    }
    SensorCommands::Command const& command = SensorCommands::Find(*id);
    auto const operation = commands.Run(command, ArgumentIn(command, request.body), request.caller.get());
    std::string const path = OperationsResource::PathOf(operation.number);
    Json document = OperationsResource::DocumentOf(commands.Log().Find(operation.number).value_or(operation));
    document["_links"] = {{"self", {{"href", path}}}};
    return {HttpStatus::ACCEPTED,
            "application/hal+json",
            ZuRest::JsonText::Write(document),
            {{"Location", path}, {"Cache-Control", "no-store"}}};
}

OperationsResource::OperationsResource(OperationLog const& shownLog) : log(shownLog)
{
}

OperationsResource::~OperationsResource() = default;

Json OperationsResource::Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& /*response*/)
{
    std::string const* const text = request.FindKey("number");
    if (text == nullptr)
    {
        Json list = Json::array();
        for (OperationLog::Operation const& operation : log.All())
        {
            list.push_back(DocumentOf(operation));
        }
        return {{"operations", std::move(list)}};
    }
    uint64 number = 0;
    auto const [end, error] = std::from_chars(text->data(), text->data() + text->size(), number);
    bool const isNumber = error == std::errc() && end == text->data() + text->size();
    auto const operation = isNumber ? log.Find(number) : std::nullopt;
    if (!operation.has_value())
    {
        ZU_THROW(Zu::Status::NOT_FOUND, "There is no operation %s among the last %zu.", text->c_str(),
                 OperationLog::MAX_KEPT);
    }
    return DocumentOf(*operation);
}

std::string OperationsResource::PathOf(uint64 number)
{
    return "/operations/" + std::to_string(number);
}

Json OperationsResource::DocumentOf(OperationLog::Operation const& operation)
{
    bool const isRunning = operation.result == OperationLog::Result::RUNNING;
    bool const isDone = operation.result == OperationLog::Result::DONE;
    uint64 const usec = isRunning ? UsecSince(operation.beginUsec) : operation.endUsec - operation.beginUsec;
    return {{"number", operation.number},
            {"what", operation.what},
            {"argument", operation.argument},
            {"who", operation.who},
            {"from", operation.from},
            {"since", operation.since},
            {"seconds", SecondsIn(usec)},
            {"result", TextFor(operation.result)},
            {"status", isRunning ? Json() : Json(isDone ? Zu::Status::SUCCESS : operation.status)},
            {"text", operation.text}};
}

SensorAuthorityResource::SensorAuthorityResource(SensorSettings& usedSettings, ControlAuthority const& shownAuthority)
    : settings(usedSettings), authority(shownAuthority)
{
}

SensorAuthorityResource::~SensorAuthorityResource() = default;

Json SensorAuthorityResource::Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& /*response*/)
{
    AuthorityParams params;
    params.Show(authority.Get());
    return NodeToJson(params, request);
}

void SensorAuthorityResource::UpdateDocument(ZuRest::RequestInfo const& /*request*/, Json const& document)
{
    settings.ChangeAuthority(document);
    NotificationEvent().Fire(*this, ZuRest::EventType::CHANGED, AUTHORITY_ROUTE);
    NotificationEvent().Fire(*this, ZuRest::EventType::CHANGED, SENSOR_ROUTE);
}

bool SensorAuthorityResource::IsUpdatable() const noexcept
{
    return true;
}

SensorLimitsResource::SensorLimitsResource(SensorSettings& usedSettings) : settings(usedSettings)
{
}

SensorLimitsResource::~SensorLimitsResource() = default;

Json SensorLimitsResource::Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& /*response*/)
{
    LimitsParams params;
    NodeFromJson(params, settings.Limits());
    return NodeToJson(params, request);
}

void SensorLimitsResource::UpdateDocument(ZuRest::RequestInfo const& /*request*/, Json const& document)
{
    settings.ChangeLimits(document);
    NotificationEvent().Fire(*this, ZuRest::EventType::CHANGED, LIMITS_ROUTE);
}

bool SensorLimitsResource::IsUpdatable() const noexcept
{
    return true;
}

SensorResources::SensorResources(Parts const& parts)
    : router(parts.module.Router()),
      sensor(parts.module, parts.jobs, parts.commands),
      command(parts.commands),
      operations(parts.commands.Log()),
      authority(parts.settings, parts.authority),
      limits(parts.settings)
{
    router.Register(SENSOR_ROUTE, sensor);
    router.Register(COMMAND_ROUTE, command);
    router.Register(AUTHORITY_ROUTE, authority);
    router.Register(LIMITS_ROUTE, limits);
    router.Register(OPERATION_ROUTE, operations);
    changes = parts.commands.ChangedSignal().Subscribe([this](uint64 number) {
        operations.NotificationEvent().Fire(operations, ZuRest::EventType::CHANGED, OperationsResource::PathOf(number));
        sensor.NotificationEvent().Fire(sensor, ZuRest::EventType::CHANGED, SENSOR_ROUTE);
    });
}

SensorResources::~SensorResources()
{
    changes.End();
    router.Deregister("/operations", true);
    router.Deregister(SENSOR_ROUTE, true);
}

} // namespace ZuHost
